// The accounts-receivable aging report: what each customer still owes on its recorded invoices,
// split by how long it has been due. Each invoice's outstanding amount ("Total" less the amount
// paid) goes into exactly one bucket: current (not yet due), 1–30, 31–60, 61–90 or over 90 days
// overdue. An invoice is due its terms after its "Date" at 00:00:00: one day when
// "PaymentTerms" is 1 (deliberately one day here, where the invoice's own due date gives none),
// otherwise "PaymentTermsDays" days (default 30).
//
// The overdue time is deliberately computed in unsigned 32-bit seconds: an invoice not yet due wraps to a huge number that fits no overdue bucket, and one overdue for
// more than 68 years fits none either (its amount still counts in the customer's balance).
//
// Times are wall-clock times of this machine (LDateTime), so a day is always 86,400 seconds.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "invoice/shared/salesreport.h"
#include "llib/gen/datetime.h"

inline constexpr long long kAgingOneDay = 86400;

// The bucket of an invoice dated invoiceDate with terms in seconds, seen at now.
enum class LAgingBucket { kCurrent, kDays1To30, kDays31To60, kDays61To90, kOver90, kNone };
LAgingBucket LAgingBucketOf(const LDateTime& now, const LDateTime& invoiceDate, long long termsSeconds);

class LReportAccountsReceivableAgingReport : public LSalesReport {
 public:
  // customers: the keys to report on; empty: every customer of "Customers". now: the moment the
  // invoices are aged at. lastDate: when valid, invoices dated after it are left out (a
  // statement at a past date); otherwise every invoice counts.
  LReportAccountsReceivableAgingReport(LProfile& profile, std::vector<std::string> customers, const LDateTime& now,
                                       const LDate& lastDate = {});

  // Title "Classement chronologique des comptes clients"; columns "Solde", "Courant",
  // "1 à 30 jours", "31 à 60 jours", "61 à 90 jours", "Plus de 90 jours"; one row per customer
  // with at least one invoice (key order), then "Total :", "Nombre de clients :" (a text cell)
  // and "Montant échu total :" (the four overdue buckets together).
  void GenerateReport(LReportTable& table) override;

  // "UseParenthesesForNegative" of the "Options" record, as read by the last GenerateReport.
  bool UseParenthesesForNegative() const { return useParentheses_; }

 private:
  struct CustomerRow {
    long long outstanding = 0;
    long long current = 0;
    long long days1To30 = 0;
    long long days31To60 = 0;
    long long days61To90 = 0;
    long long over90 = 0;
    CustomerRow& operator+=(const CustomerRow& other);
  };
  // Adds one invoice's amounts to the customer's row, creating it on first use.
  void AddCustomer(const std::string& customer, long long current, long long outstanding, long long days1To30,
                   long long days31To60, long long days61To90, long long over90);

  LDateTime now_;
  bool useParentheses_ = false;
  std::map<std::string, CustomerRow> rows_;
};
