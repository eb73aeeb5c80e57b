// The period of the document lists on the web (invoices, quotes, orders, credit notes and
// payments on the sales side; purchase orders, bills and bill payments on the ledger side, with
// a supplier where these have a customer): a list shows one period (this fiscal year unless the
// request names another), optionally one party, sorted by any column and a page of
// kLWebListPageRows rows at a time, so that a business with years of documents sends a page, not
// thousands of rows.
//
// One list, one LWebPeriodList, and its routes named after the list's route:
//   "<list>"                  the page (LWebWritePeriodListPage): the filter bar, then the block
//                             <div id=listblock> of the list that LWebWritePagedRows ends;
//   "<list>period"            the period dialog (LWebListPeriodDialogOf): a named period or two
//                             dates and the party; OK shows the list so filtered;
//   "<list>periodchange"      AJAX of the filter bar's period choice,
//   "<list>datechange"        of its dates,
//   "<list><party>change"     of its party choice ("invoicelistcustomerchange",
//                             "billlistsupplierchange"): all three answer with script that puts
//                             the new block in place (WLWebListRefilterRun);
//   "prdselchange"            AJAX of every period dialog: the dates of the period chosen.
// Request parameters: "prd" (a named period, kLWebPeriodCustom for the dates), "from" and "to"
// ("YYYY-MM-DD"), the party ("customer", "supplier"), "iCol" and "bAsc" (sort), "page" (from 1).
// A link "<list>?prd=pm&customer=DUP" is a filtered list like any other; the browser's address
// follows the AJAX refilters, so that reloading or going back shows what was shown.
//
// How another list uses it (a page of accounts/ or invoice/, with its own rows):
//
//     const LWebPeriodList kBillList{"billlist", "supplier", "Fournisseur", LWebSupplierChoices};
//     class LWebBillsPage : public LWebPageMainEx {
//      public:
//       explicit LWebBillsPage(LWebletForm& form) : LWebPageMainEx(form, "billlist", "Factures fournisseurs") {}
//       const LWebPeriodList& PeriodList() const { return kBillList; }
//       void Generate() override {
//         LProfile profile(WLSessionBusinessFolder(form_));
//         UseListScript();
//         LWebWritePeriodListPage(form_, profile, kBillList, "<a href='billprop'>Nouvelle facture</a>",
//                                 [this](LWebletForm& out) { WriteListBlock(out); });
//       }
//       // The table of the filter's rows: an LHtmlList(form_, ...) of the rows whose date
//       // filter.Holds(), then LWebWritePagedRows(out, list, kBillList, filter, summary).
//       void WriteListBlock(LWebletForm& out);
//     };
//     {"billlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kBillList>>},
//     {"billlistperiodchange", WLWebListRefilterRun<LWebBillsPage>},
//     {"billlistdatechange", WLWebListRefilterRun<LWebBillsPage>},
//     {"billlistsupplierchange", WLWebListRefilterRun<LWebBillsPage>},
// ("prdselchange" is installed once, by the ledger side's pages.)
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/webaccess.h"
#include "llib/web/webletform.h"

class LHtmlList;
class LProfile;

inline constexpr int kLWebListPageRows = 100;
inline constexpr char kLWebPeriodCustom[] = "custom";

// The party choices of a list's filter, as pull-down texts and values after an empty choice
// (LWebCustomerChoices).
using LWebPartyChoices = void (*)(LProfile& profile, std::vector<std::string>& texts,
                                  std::vector<std::string>& values);

// One list with a period.
struct LWebPeriodList {
  const char* listRoute;         // "invoicelist": the other routes are named after it
  const char* partyParam;        // "customer" or "supplier": the parameter and the route word
  const char* partyLabel;        // "Client", "Fournisseur"
  LWebPartyChoices partyChoices;  // the parties offered
  // A second choice beside the party (the journal's transaction type): its parameter, label and
  // choices; none when null. It refilters through the party's route.
  const char* extraParam = nullptr;
  const char* extraLabel = nullptr;
  LWebPartyChoices extraChoices = nullptr;
  // Routes of their own for a list whose routes have always had other names (the journal's);
  // null: named after listRoute as above, and "prdselchange" for the dialog's period choice.
  const char* periodChangeRoute = nullptr;
  const char* dateChangeRoute = nullptr;
  const char* partyChangeRoute = nullptr;
  const char* dialogRoute = nullptr;
  const char* periodSelectRoute = nullptr;
  // The named period shown when the request names none; null: "fy", this fiscal year.
  const char* defaultPeriod = nullptr;
};

// The route of one of a list's calls: kind is "periodchange", "datechange", "partychange",
// "period" or "prdselchange".
std::string LWebPeriodListRoute(const LWebPeriodList& list, std::string_view kind);

// The named periods, in the order they are offered: code and French text. The first, "fy",
// is this fiscal year, the default.
struct LWebNamedPeriod {
  const char* code;
  const char* text;
};
const std::vector<LWebNamedPeriod>& LWebNamedPeriods();
// The dates of a named period on day today; false for an unknown code (period unchanged).
// "all" has empty ends.
bool LWebNamedPeriodDates(LProfile& profile, std::string_view code, const LDate& today, LDTPeriod& period);

// What a list shows.
struct LWebListFilter {
  std::string periodCode = "fy";  // a named period, or kLWebPeriodCustom
  LDTPeriod period;               // both ends included; an empty end is open
  std::string party;              // "" for every party
  std::string extra;              // the second choice; "" for all
  int page = 1;                   // from 1
  std::string error;              // a date that could not be read, in French; "" when none

  // true when date ("YYYY-MM-DD", time after it ignored) is inside the period.
  bool Holds(std::string_view date) const;
};
// The filter of the request: a named "prd" gives its dates; otherwise "from" and "to" (the
// custom period; one that cannot be read keeps the default period's end and names itself in
// error); nothing at all: the list's default period (this fiscal year unless it names another).
LWebListFilter LWebReadListFilter(const LWebletForm& form, LProfile& profile, const LWebPeriodList& list);
// The query of a list so filtered (without "page"), for links: "prd=fy&from=...", and the sort
// of the request ("iCol", "bAsc") when it names one.
std::string LWebListFilterQuery(const LWebPeriodList& list, const LWebListFilter& filter, const LWebletForm& form);

// The content of a list page: the request's message ("msg", a refusal sent back with the
// browser), the filter bar, newLink (HTML; empty for none) and the block <div id=listblock> that
// writeBlock fills. The page includes the list script itself (UseListScript).
void LWebWritePeriodListPage(LWebletForm& form, LProfile& profile, const LWebPeriodList& list,
                             std::string_view newLink, const std::function<void(LWebletForm& out)>& writeBlock);
// The filter bar above the list: the named period, the dates, the party, "Afficher" (a plain
// GET, so that the page works without script) and the link to the period dialog; each change
// refilters through its AJAX route.
void LWebWriteListFilterBar(LWebletForm& out, LProfile& profile, const LWebPeriodList& list,
                            const LWebListFilter& filter);
// The route that a sortable header of a paged list calls ("<list>periodchange").
std::string LWebListRefilterRoute(const LWebPeriodList& list);

// Writes the rows of the filter's page of list (after sorting: each page is a slice of the
// whole order), then summary and the page links. A list of several pages is sorted by the server
// when a header is clicked (LWebListRefilterRoute).
void LWebWritePagedRows(LWebletForm& out, LHtmlList& list, const LWebPeriodList& periodList,
                        const LWebListFilter& filter, std::string_view summary);

// The answer of the refilter routes: after the session and access checks, script that sets the
// filter bar's values, replaces the list block by what writeBlock writes and updates the
// browser's address. A "<list>datechange" makes the period custom; every refilter starts at
// page 1.
void WLWebListRefilter(LWebletForm& form, const LWebPeriodList& list,
                       const std::function<void(LWebletForm& out)>& writeBlock);

// Route adaptor of the refilters of a page class that offers PeriodList() and
// WriteListBlock(out).
template <class Page>
void WLWebListRefilterRun(LWebletForm& form) {
  Page page(form);
  WLWebListRefilter(form, page.PeriodList(), [&page](LWebletForm& out) { page.WriteListBlock(out); });
}

// "prdselchange": the dates of the named period "prd" as script that fills the period dialog's
// date controls.
void WLPeriodSelectionChange(LWebletForm& form);

// "<list>period": the period dialog of a list.
class LWebListPeriodDialog : public LWebDialogEx {
 public:
  LWebListPeriodDialog(LWebletForm& form, const LWebPeriodList& list);
  ~LWebListPeriodDialog() override;
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

  static constexpr int kPeriodControl = 101;
  static constexpr int kFromControl = 102;
  static constexpr int kToControl = 103;
  static constexpr int kPartyControl = 104;

 private:
  LProfile& Profile();

  const LWebPeriodList& list_;
  std::unique_ptr<LProfile> profile_;
};

template <const LWebPeriodList& L>
class LWebListPeriodDialogOf : public LWebListPeriodDialog {
 public:
  explicit LWebListPeriodDialogOf(LWebletForm& form) : LWebListPeriodDialog(form, L) {}
};
