// The choice of a consolidated report (route "consolreport"): one of the financial statements
// that total several businesses, and the businesses the user may open, each ticked with its
// factor (a currency's conversion rate, or the share held). OK goes to the report's chooser with
// the businesses in its address ("cons", as generatereport reads it); the chooser then shows the
// report through generateconsreport, built as `kontavo report NAME --consolidate` builds it.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "accounts/webreports.h"
#include "invoice/shared/webaccess.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

constexpr int kReport = 201;
// One business a row: its check box and its factor, by its number in LWebBusinessList.
constexpr int kFirstCheck = 300;
constexpr int kFirstFactor = 400;
constexpr std::size_t kMostBusinesses = 99;

// A business offered, with its number in LWebBusinessList (the number "cons" uses).
struct LOfferedBusiness {
  int number = 0;
  LWebBusiness business;
};

// The businesses the session's user may open, numbered as LWebBusinessList numbers them.
std::vector<LOfferedBusiness> Offered(LWebletForm& form) {
  std::vector<LWebBusiness> all = LWebBusinessList();
  std::vector<LOfferedBusiness> offered;
  for (LWebBusiness& allowed : WLSessionBusinesses(form))
    for (std::size_t i = 0; i < all.size() && i < kMostBusinesses; ++i)
      if (all[i].folder == allowed.folder) offered.push_back({static_cast<int>(i), std::move(allowed)});
  return offered;
}

class LWebConsolidationDialog : public LWebDialogEx {
 public:
  explicit LWebConsolidationDialog(LWebletForm& form) : LWebDialogEx(form, kConsolidationRoute) {
    SetTitle("Rapport consolidé");
    SetOkText("Continuer");
    SetCancelPage("reports");
    AddNavLink("reports", "Rapports");
    AddNavLink("logoff", "Déconnexion");
  }

  void InitDialog() override {
    std::string report = form_.GetParam("report");
    SetText(kReport, report.empty() ? "pl" : report);
    // The businesses of the address (a report's "Changer d'entreprises"), else the open one.
    std::string text = form_.GetParam("cons");
    if (text.empty()) {
      std::string open = WLSessionBusinessFolder(form_);
      for (const LOfferedBusiness& offered : Offered(form_))
        if (offered.business.folder == open) SetCheck(kFirstCheck + offered.number, true);
    }
    for (std::size_t start = 0; start < text.size();) {
      std::size_t comma = std::min(text.find(',', start), text.size());
      std::string part = text.substr(start, comma - start);
      start = comma + 1;
      std::size_t equals = part.find('=');
      if (equals == std::string::npos || equals == 0 || equals > 2 ||
          part.find_first_not_of("0123456789") < equals)
        continue;
      int number = LTextToInt(part.substr(0, equals));
      SetCheck(kFirstCheck + number, true);
      SetText(kFirstFactor + number, part.substr(equals + 1));
    }
  }

  void Generate() override {
    std::vector<std::string> texts, names;
    for (const LReportEntry& entry : LReportEntries()) {
      if ((entry.asks & kReportConsolidates) == 0) continue;
      texts.emplace_back(entry.title);
      names.emplace_back(entry.name);
    }
    AddPullDownList(kReport, "Rapport :", texts, names, false, {});
    AddStaticBold("Entreprises à consolider :");
    AddStaticSmall("Chaque montant d'une entreprise est multiplié par son taux (taux de change, ou part détenue).");
    for (const LOfferedBusiness& offered : Offered(form_)) {
      int check = kFirstCheck + offered.number, factor = kFirstFactor + offered.number;
      std::string value = form_.GetParam(std::to_string(factor), "1");
      StartRow();
      form_.Write("<td>");
      AddCheckBoxSimple(check, offered.business.name.empty() ? "Entreprise principale" : offered.business.name, true);
      form_.wfprintf("</td><td><label for=%d>Taux : </label><input id=%d name=%d type=text value='%H' size=10 "
                     "inputmode=decimal></td>",
                     factor, factor, factor, value.c_str());
      EndRow();
    }
  }

  void EnableControls() override {
    for (const LOfferedBusiness& offered : Offered(form_))
      EnableControlRangeOnCheck(kFirstCheck + offered.number, kFirstFactor + offered.number,
                                kFirstFactor + offered.number);
  }

  bool CmOk() override {
    const LReportEntry* entry = LReportFind(GetText(kReport));
    if (entry == nullptr || (entry->asks & kReportConsolidates) == 0) {
      PopupControlDataInvalid(kReport, "Choisissez un rapport.");
      return false;
    }
    std::vector<LOfferedBusiness> offered = Offered(form_);
    std::string list;
    for (const LOfferedBusiness& business : offered) {
      if (!IsChecked(kFirstCheck + business.number)) continue;
      int factorId = kFirstFactor + business.number;
      std::string text = GetTextAndTrim(factorId);
      double factor = 0;
      if (!LReportParseFactor(text, factor) || factor <= 0) {
        PopupControlDataInvalid(factorId, "Taux invalide : " + text + " (un nombre positif, par exemple 0.85).");
        return false;
      }
      if (std::size_t comma = text.find(','); comma != std::string::npos) text[comma] = '.';
      list += LWebFormat("%s%d=%s", list.empty() ? "" : ",", business.number, text.c_str());
    }
    if (list.empty()) {
      PopupControlDataInvalid(offered.empty() ? kReport : kFirstCheck + offered.front().number,
                              "Cochez au moins une entreprise.");
      return false;
    }
    Redirect(LWebFormat("reportredirect?report=%U&cons=%U", std::string(entry->name).c_str(), list.c_str()));
    SetAnswerWritten();
    return true;
  }
};

const LWebletRoute kConsolidationRoutes[] = {
    {kConsolidationRoute, WLWebDialogRun<LWebConsolidationDialog>},
};

}  // namespace

void LAccountsInstallConsolidationPages() { LWebletInstallScripts(kConsolidationRoutes); }
