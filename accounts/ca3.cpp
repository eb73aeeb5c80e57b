#include "accounts/ca3.h"

#include <cmath>
#include <map>
#include <set>

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "accounts/ledgeriterator.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/totals.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"

namespace {

using LRecordIterator = LDataStoreListIterator<LFileStoreDataStore, LSalesDocument>;

// The line of the form for a rate of the French taxes.
std::string CodeOfRate(double rate) {
  struct Line {
    double rate;
    const char* code;
  };
  static constexpr Line kLines[] = {{20, "08"}, {10, "9B"}, {5.5, "09"}, {2.1, "11"}};
  for (const auto& line : kLines)
    if (std::fabs(line.rate - rate) < 1e-9) return line.code;
  return {};
}

bool InPeriod(const std::string& date, const LDate& from, const LDate& to) {
  LDate day;
  return LDate::Parse(date, day) && !(day < from) && !(to < day);
}

class LCa3Builder {
 public:
  LCa3Builder(LProfile& profile, const LDate& from, const LDate& to) : profile_(profile), from_(from), to_(to) {
    tax_.OpenFrom(profile);
    figures_.untaxed = {"05", "Autres opérations non imposables", 0, 0, {}};
    figures_.collectedAdjustments = {"", "Régularisations de TVA collectée (écritures)", 0, 0, {}};
    figures_.fixedAssets = {"19", "Biens constituant des immobilisations", 0, 0, {}};
    figures_.otherGoods = {"20", "Autres biens et services", 0, 0, {}};
  }

  LCa3Figures Build() {
    AddSales(LSalesDocumentType::kInvoice, "Facture", +1);
    AddSales(LSalesDocumentType::kCreditNote, "Avoir", -1);
    AddBills();
    AddJournalLines();
    for (auto& [rate, line] : byRate_) figures_.sales.push_back(std::move(line));
    for (const auto& line : figures_.sales) figures_.totalDue += line.tax;
    figures_.totalDue += figures_.collectedAdjustments.tax;
    figures_.totalDeductible = figures_.fixedAssets.tax + figures_.otherGoods.tax;
    long long balance = figures_.totalDue - figures_.totalDeductible;
    figures_.netDue = balance > 0 ? balance : 0;
    figures_.credit = balance < 0 ? -balance : 0;
    return std::move(figures_);
  }

 private:
  static void Add(LCa3Line& line, LCa3Source source) {
    line.base += source.base;
    line.tax += source.tax;
    line.sources.push_back(std::move(source));
  }

  // Invoices (sign +1) or credit notes (sign -1) dated in the period, tax by tax.
  void AddSales(LSalesDocumentType type, const std::string& title, long long sign) {
    LDataStoreList<LFileStoreDataStore, LSalesDocument> list(profile_.GetDataStore(),
                                                             LSalesDocumentKindOf(type).recordedList);
    bool inclusive = tax_.IsTaxInclusive();
    for (LRecordIterator it(list); it.IsValid(); it.Next()) {
      if (!InPeriod(it->GetDate(), from_, to_)) continue;
      bool untaxedDocument = it->GetDocumentTaxMode() == kDocumentUntaxed;
      std::string label = title + " " + it->GetPrimaryKey();
      // What no tax is taken on: the total less the taxed bases and, unless prices include
      // them, the taxes.
      long long untaxed = it->GetTotal();
      for (const LFKTaxBreakdownLine& entry : LFKDocumentTaxBreakdown(profile_, *it)) {
        // The tax as recorded and posted, not as today's rates would make it.
        long long tax = untaxedDocument ? 0 : TaxAmountOf(*it, entry.name);
        untaxed -= inclusive ? entry.base : entry.base + tax;
        if (untaxedDocument) continue;
        long long base = inclusive ? entry.base - tax : entry.base;
        LCa3Line& line = byRate_[{-entry.rate.rate1, entry.name}];
        if (line.label.empty()) line = {CodeOfRate(entry.rate.rate1), entry.name, 0, 0, {}};
        Add(line, {label, it->GetDate(), sign * base, sign * tax});
      }
      if (untaxed != 0) Add(figures_.untaxed, {label, it->GetDate(), sign * untaxed, 0});
    }
  }

  static long long TaxAmountOf(const LSalesDocument& document, const std::string& name) {
    int count = document.GetInt("TaxAmountCount", 0);
    for (int n = 1; n <= count; ++n)
      if (document.GetString("TaxAmountName" + std::to_string(n)) == name)
        return document.GetInt64("TaxAmount" + std::to_string(n), 0);
    return 0;
  }

  // Bills dated in the period: each tax split between fixed assets and the rest by the amounts
  // of the lines it was charged on.
  void AddBills() {
    LDataStoreList<LFileStoreDataStore, LBill> bills(profile_.GetDataStore(), kBillsList);
    for (LDataStoreListIterator<LFileStoreDataStore, LBill> it(bills); it.IsValid(); it.Next()) {
      if (!InPeriod(it->GetString("Date"), from_, to_)) continue;
      std::string label = "Facture fournisseur " + it->GetPrimaryKey();
      for (int k = 1, count = tax_.GetTaxCount(); k <= count; ++k) {
        long long tax = it->GetTaxAmount(k);
        if (tax == 0) continue;
        std::string name = tax_.GetTaxName(k);
        long long assetBase = 0, otherBase = 0;
        for (int line = 1; line <= it->GetItemCount(); ++line) {
          if (it->GetItemTaxName(line) != name) continue;
          (IsFixedAsset(it->GetItemAccount(line)) ? assetBase : otherBase) += it->GetItemAmount(profile_, line);
        }
        long long assetTax = assetBase + otherBase == 0
                                 ? 0
                                 : LRoundHalfAwayFromZero(static_cast<double>(tax) * static_cast<double>(assetBase) /
                                                        static_cast<double>(assetBase + otherBase));
        if (assetTax != 0) Add(figures_.fixedAssets, {label, it->GetString("Date"), assetBase, assetTax});
        if (tax - assetTax != 0) Add(figures_.otherGoods, {label, it->GetString("Date"), otherBase, tax - assetTax});
      }
    }
  }

  // Fixed assets are bought onto asset accounts (class 2 of the general chart).
  bool IsFixedAsset(const std::string& number) {
    auto known = assetAccounts_.find(number);
    if (known != assetAccounts_.end()) return known->second;
    LAccount account;
    bool asset = LAccountList(profile_).Open(account, number) && account.GetType() == kAccountAsset &&
                 !account.IsCash();
    return assetAccounts_[number] = asset;
  }

  // Journal lines on the tax accounts that no document posted.
  void AddJournalLines() {
    std::set<std::string> collected, deductible;
    for (int k = 1, count = tax_.GetTaxCount(); k <= count; ++k) {
      std::string payable = LGetAccountNumberUsingDescription(profile_, tax_.GetTaxAccountPayable(k));
      if (!payable.empty()) collected.insert(payable);
      std::string paid = LBillTaxPaidAccountNumber(profile_, k);
      if (!paid.empty()) deductible.insert(paid);
    }
    LLedgerAccountLineIterator it(profile_, from_.ToText(), to_.ToText());
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
      const LLedgerJournalLine& line = it.line;
      if (line.type == kTxnTypeSales || line.type == kTxnTypePurchase || line.type == kTxnTypeReceipt ||
          line.type == kTxnTypeBillPayment)
        continue;
      std::string label = "Écriture " + line.reference;
      if (collected.count(line.account) != 0) Add(figures_.collectedAdjustments, {label, line.date, 0, -line.amount});
      else if (deductible.count(line.account) != 0) Add(figures_.otherGoods, {label, line.date, 0, line.amount});
    }
  }

  LProfile& profile_;
  LDate from_, to_;
  LTaxOptions tax_;
  LCa3Figures figures_;
  std::map<std::pair<double, std::string>, LCa3Line> byRate_;  // keyed by (-rate, name)
  std::map<std::string, bool> assetAccounts_;                   // account number -> fixed asset
};

void AddLine(LReportTable& table, const LCa3Line& line, bool withBase) {
  std::string label = line.code.empty() ? line.label : line.code + " " + line.label;
  table.AddRow(LReportRowKind::kAccount, label, {withBase ? std::optional<long long>(line.base) : std::nullopt, line.tax},
               1);
  for (const auto& source : line.sources)
    table.AddRow(LReportRowKind::kAccount, source.label + " du " + source.date,
                 {withBase ? std::optional<long long>(source.base) : std::nullopt, source.tax}, 2);
}

}  // namespace

LCa3Figures LCa3Compute(LProfile& profile, const LDate& from, const LDate& to) {
  return LCa3Builder(profile, from, to).Build();
}

void LCa3Report(const LCa3Figures& figures, const LDate& from, const LDate& to, LReportTable& table) {
  table.title = "TVA - déclaration CA3";
  table.subtitle = "Du " + from.ToText() + " au " + to.ToText();
  table.columns = {"Base hors taxe", "Taxe"};
  table.AddHeading("Opérations imposables");
  for (const auto& line : figures.sales) AddLine(table, line, true);
  if (!figures.untaxed.sources.empty()) AddLine(table, figures.untaxed, true);
  if (!figures.collectedAdjustments.sources.empty()) AddLine(table, figures.collectedAdjustments, false);
  table.AddRow(LReportRowKind::kTotal, "16 Total de la TVA brute due", {std::nullopt, figures.totalDue});
  table.AddHeading("TVA déductible");
  AddLine(table, figures.fixedAssets, true);
  AddLine(table, figures.otherGoods, true);
  table.AddRow(LReportRowKind::kTotal, "23 Total TVA déductible", {std::nullopt, figures.totalDeductible});
  if (figures.credit > 0) table.AddRow(LReportRowKind::kResult, "25 Crédit de TVA", {std::nullopt, figures.credit});
  else table.AddRow(LReportRowKind::kResult, "28 TVA nette due", {std::nullopt, figures.netDue});
}
