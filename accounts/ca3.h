// The figures of the French VAT return (the CA3 form) for a month or a quarter, from what the
// books hold for the period:
//
//   taxable sales per rate    the recorded invoices dated in the period, less their credit
//                             notes: per tax, its base (lines and taxed shipping, without the
//                             tax) and the tax itself; lines 08 (20 %), 9B (10 %), 09 (5,5 %),
//                             11 (2,1 %), other rates under their own name
//   untaxed sales             line 05, what untaxed documents and lines without tax sold
//   deductible VAT            the bills dated in the period, tax by tax: on fixed assets
//                             (line 19: the share of a tax that falls on lines booked to asset
//                             accounts, class 2 of the general chart) and on other goods and
//                             services (line 20)
//   journal adjustments       lines of journal entries (and other transactions that no document
//                             posted) on the accounts taxes are collected into (due) or deducted
//                             on (deductible)
//   totals                    16 VAT due, 23 deductible, then 28 net VAT due or 25 VAT credit
//
// Each figure keeps its sources (document, date, base, tax) so that every line can be traced.
#pragma once

#include <string>
#include <vector>

#include "llib/gen/date.h"

class LProfile;
class LReportTable;

// One document or journal line behind a figure.
struct LCa3Source {
  std::string label;    // "Facture 12", "Avoir 3", "Facture fournisseur PRC10002", "Écriture GJ10004"
  std::string date;     // "YYYY-MM-DD"
  long long base = 0;   // cents, without tax
  long long tax = 0;    // cents
};

// One line of the form.
struct LCa3Line {
  std::string code;     // "08", "9B", "19"...; empty for a rate that has no line of its own
  std::string label;    // "TVA 20 %", "Biens constituant des immobilisations"...
  long long base = 0;
  long long tax = 0;
  std::vector<LCa3Source> sources;
};

struct LCa3Figures {
  std::vector<LCa3Line> sales;      // per rate, in decreasing order of rate
  LCa3Line untaxed;                 // line 05
  LCa3Line collectedAdjustments;    // journal lines on collected-tax accounts
  LCa3Line fixedAssets;             // line 19
  LCa3Line otherGoods;              // line 20 (journal lines on deductible accounts included)
  long long totalDue = 0;           // line 16
  long long totalDeductible = 0;    // line 23
  long long netDue = 0;             // line 28, 0 when there is a credit
  long long credit = 0;             // line 25, 0 when VAT is due
};

// The figures of the period, both days included.
LCa3Figures LCa3Compute(LProfile& profile, const LDate& from, const LDate& to);
// The form as a report table: columns "Base hors taxe" and "Taxe", each line with its sources
// under it.
void LCa3Report(const LCa3Figures& figures, const LDate& from, const LDate& to, LReportTable& table);
