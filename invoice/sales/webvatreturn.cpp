// The UK VAT return pages (HMRC) and the page "vatreturn" that leads to the return of the
// business's country.
#include "invoice/sales/webvatreturn.h"

#include <nlohmann/json.hpp>

#include "accounts/webreports.h"
#include "invoice/sales/webvatca3.h"
#include "invoice/sales/webvatpage.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/vatobligationsreport.h"
#include "invoice/shared/vatreturnreport.h"
#include "invoice/shared/vatreturnsteps.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/process.h"
#include "llib/gen/reporttable.h"
#include "llib/gen/textnum.h"
#include "llib/gen/trim.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

constexpr char kVrnRefusal[] = "Please enter your VAT registration number in Options to proceed.";

// The boxes kept by the running figures: a box left as it was shown takes its figure from them,
// so that the submission takes it out of them.
constexpr int kRunningBoxes[] = {1, 6, 8};

// ---- vatreturn (United Kingdom) -----------------------------------------------------------------

class LWebVatHomePage : public LWebVatPage {
 public:
  explicit LWebVatHomePage(LWebletForm& form, std::string_view title = "Déclaration de TVA (HMRC)")
      : LWebVatPage(form, title) {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    WriteOutcome();
    std::string vrn = FKVatRegistrationNumber(profile);
    bool authorized = FKMTDforVATAuthorized();
    std::string api = FKMTDApiBaseUrl();
    form_.wfprintf("<h3>Paramètres</h3><table class=vatsettings>"
                   "<tr><th>Numéro de TVA</th><td id=vrn>%H</td></tr>"
                   "<tr><th>Service HMRC</th><td id=api>%H</td></tr>"
                   "<tr><th>Autorisation</th><td id=authorized>%s</td></tr></table>",
                   vrn.empty() ? "—" : vrn.c_str(), api.c_str(), authorized ? "Accordée" : "Non accordée");
    if (vrn.empty()) form_.wfprintf("<p class=error>%H</p>", kVrnRefusal);
    form_.Write("<p class=reportlinks><a href='vatsettings' class=actionlink>Modifier les paramètres</a> "
                "<a href='vatauth' class=actionlink>Autoriser l'accès à HMRC</a> "
                "<a href='vatview' class=actionlink>Voir une déclaration transmise</a></p>");
    form_.Write("<h3>Obligations</h3><form method=post action='vatobligations' class=vatfetch>"
                "<p><input type=submit name=fetch value='Obtenir les obligations' class='button okbutton'></p>"
                "<p>ou les périodes du <input type=date name=from id=from> au <input type=date name=to id=to> "
                "<input type=submit name=range value='Obtenir pour ces dates' class=button></p></form>");
    WriteObligations(profile);
  }

 private:
  // The stored obligations, each with what may be done with its return.
  void WriteObligations(LProfile& profile) {
    LReportTable table;
    LReportVatObligations(profile, table);
    if (table.rows.empty()) {
      form_.Write("<p id=obligations>Aucune obligation enregistrée : obtenez-les auprès de HMRC.</p>");
      return;
    }
    form_.wfprintf("<table class=report id=obligations><caption>%H</caption><thead><tr><th>Period Key</th>",
                   table.title.c_str());
    for (const std::string& column : table.columns) form_.wfprintf("<th>%H</th>", column.c_str());
    form_.Write("<th></th></tr></thead><tbody>");
    for (const LReportRow& row : table.rows) {
      form_.wfprintf("<tr><td>%H</td>", row.label.c_str());
      for (const std::string& text : row.texts) form_.wfprintf("<td>%H</td>", text.c_str());
      bool fulfilled = row.texts.size() > 3 && row.texts[3] == "F";
      form_.wfprintf("<td><a href='%s?period=%U' class=actionlink>%s</a></td></tr>", fulfilled ? "vatview" : "vatsubmit",
                     row.label.c_str(), fulfilled ? "Voir la déclaration" : "Remplir la déclaration");
    }
    form_.Write("</tbody></table>");
  }
};

// ---- vatsettings ---------------------------------------------------------------------------------

class LWebVatSettingsPage : public LWebVatPage {
 public:
  explicit LWebVatSettingsPage(LWebletForm& form) : LWebVatPage(form, "Paramètres de la déclaration de TVA") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    std::string vrn = FKVatRegistrationNumber(profile), api = FKMTDApiBaseUrl();
    if (!form_.GetParam("save").empty()) {
      vrn = std::string(LTrim(form_.GetParam("vrn"), " \t"));
      api = std::string(LTrim(form_.GetParam("api"), " \t"));
      std::string error;
      if (FKVatConfigure(profile, vrn, api, error)) SetOutcome({"Paramètres enregistrés.", ""}, true);
      else SetOutcome({error, ""}, false);
      api = FKMTDApiBaseUrl();
    }
    WriteOutcome();
    form_.wfprintf(
        "<form method=post action='vatsettings' class=vatform>"
        "<p><label for=vrn>Numéro d'immatriculation à la TVA (VRN) :</label> "
        "<input id=vrn name=vrn value='%H' size=14 autocomplete=off></p>"
        "<p><label for=api>Adresse du service HMRC :</label> <input id=api name=api value='%H' size=50></p>"
        "<p class=dlgsmall>« sandbox » pour l'environnement de test de HMRC (%H), « production » pour le service "
        "réel (%H).</p>"
        "<p><input type=submit name=save value='Enregistrer' class='button okbutton'> <a href='vatreturn' class=actionlink>Retour</a></p>"
        "</form>",
        vrn.c_str(), api.c_str(), std::string(kMTDSandboxApi).c_str(), std::string(kMTDProductionApi).c_str());
  }
};

// ---- vatauth -------------------------------------------------------------------------------------

class LWebVatAuthPage : public LWebVatPage {
 public:
  explicit LWebVatAuthPage(LWebletForm& form) : LWebVatPage(form, FKMTDforVATAuthDlg::kTitle) {}
  void Generate() override {
    LProcessInterfaceVoid process;
    FKMTDforVATAuthDlg dialog(process);
    // The code pasted, or brought by a redirect that reached this server.
    std::string code(LTrim(form_.GetParam("code"), " \t"));
    if (!code.empty()) {
      if (dialog.Authorize(code)) {
        SetOutcome({"L'accès à HMRC est autorisé.", ""}, true);
        WriteOutcome();
        form_.Write("<p class=reportlinks><a href='vatreturn' class=actionlink>Déclaration de TVA</a></p>");
        return;
      }
      SetOutcome(dialog.Alert(), false);
    }
    WriteOutcome();
    std::string url = dialog.AuthorizeUrl();
    form_.wfprintf(
        "<ol class=vatsteps><li>Ouvrez la page d'autorisation de HMRC et connectez-vous avec l'identifiant de "
        "l'entreprise : <a href='%H' target=_blank rel=noopener id=authorizelink class=actionlink>Page "
        "d'autorisation HMRC</a></li>"
        "<li>HMRC affiche ensuite un code (« Success code=… ») : collez-le ci-dessous.</li></ol>"
        "<form method=post action='vatauth' class=vatform><p><label for=code>Code d'autorisation :</label> "
        "<input id=code name=code size=50 autocomplete=off></p>"
        "<p><input type=submit name=authorize value='Valider le code' class='button okbutton'> <a href='vatreturn' "
        "class=actionlink>Retour</a></p></form>",
        url.c_str());
  }
};

// ---- vatobligations ------------------------------------------------------------------------------

// Fetches the obligations, then shows them as the home page does.
class LWebVatObligationsPage : public LWebVatHomePage {
 public:
  explicit LWebVatObligationsPage(LWebletForm& form) : LWebVatHomePage(form, "Obligations de TVA (HMRC)") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LProcessInterfaceVoid process;
    FKMTDforVATDlg dialog(profile, process);
    if (!form_.GetParam("range").empty()) {
      std::string from = form_.GetParam("from"), to = form_.GetParam("to");
      LDate start, end;
      if (!LDate::Parse(from, start) || !LDate::Parse(to, end) || end < start) {
        SetOutcome({"Choisissez deux dates, la première avant la seconde (AAAA-MM-JJ).", ""}, false);
        LWebVatHomePage::Generate();
        return;
      }
      dialog.SetObligationsRange(from, to);
    }
    if (dialog.RetrieveVatObligations(true)) {
      std::size_t count = LVATObligationsLoad(profile).size();
      SetOutcome({count == 1 ? std::string("1 obligation reçue de HMRC.") : LWebFormat("%zu obligations reçues de HMRC.", count), ""},
                 true);
    } else {
      SetOutcome(dialog.Alert(), false);
    }
    LWebVatHomePage::Generate();
  }
};

// ---- vatsubmit -----------------------------------------------------------------------------------

// A box's value as its field shows it: pounds and pence for boxes 1 to 5, whole pounds after.
std::string BoxText(const FKVatReturns& r, int box) {
  auto pence = [](double pounds) { return LRoundHalfAwayFromZero(pounds * 100); };
  switch (box) {
    case 1: return LFormatAmountPlain(pence(r.vatDueSales), 2);
    case 2: return LFormatAmountPlain(pence(r.vatDueAcquisitions), 2);
    case 3: return LFormatAmountPlain(pence(r.totalVatDue), 2);
    case 4: return LFormatAmountPlain(pence(r.vatReclaimedCurrPeriod), 2);
    case 5: return LFormatAmountPlain(pence(r.netVatDue), 2);
    case 6: return std::to_string(r.totalValueSalesExVAT);
    case 7: return std::to_string(r.totalValuePurchasesExVAT);
    case 8: return std::to_string(r.totalValueGoodsSuppliedExVAT);
    default: return std::to_string(r.totalAcquisitionsExVAT);
  }
}

class LWebVatSubmitPage : public LWebVatPage {
 public:
  explicit LWebVatSubmitPage(LWebletForm& form) : LWebVatPage(form, "Déclaration de TVA à transmettre") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    std::vector<std::unique_ptr<LVATObligation>> open = FKVatObligationsWithStatus(profile, false);
    if (open.empty()) {
      SetOutcome({"No open obligations found", ""}, false);
      WriteOutcome();
      form_.Write("<p class=reportlinks><a href='vatreturn' class=actionlink>Déclaration de TVA</a></p>");
      return;
    }
    std::string period = form_.GetParam("period");
    if (period.empty()) period = open.front()->GetPeriodKey();
    FKVatReturns running = FKVatReturnToSubmit(profile, period, {});
    if (!form_.GetParam("submit").empty() && Submit(profile, period, running)) return;
    WriteOutcome();
    WriteForm(open, period, running);
  }

 private:
  // Sends the return of the form; true when HMRC accepted it (the receipt is then shown).
  bool Submit(LProfile& profile, const std::string& period, const FKVatReturns& running) {
    FKVatGivenFigures given;
    for (int box = 1; box <= 9; ++box) {
      std::string text(LTrim(form_.GetParam("box" + std::to_string(box)), " \t"));
      long long value = 0;
      if (!LParseAmount(text, box >= 6 ? 0 : 2, value)) {
        SetOutcome({std::string(FKVatBoxLabel(box)) +
                        (box >= 6 ? " : nombre entier de livres attendu." : " : montant non valide."),
                    ""},
                   false);
        return false;
      }
      given.box[box] = value;
    }
    for (int box : kRunningBoxes) {
      std::string shown = form_.GetParam("shown" + std::to_string(box));
      if (LTrim(form_.GetParam("box" + std::to_string(box)), " \t") != shown) continue;
      if (shown != BoxText(running, box)) {
        // Sales were recorded since the form was shown: show the figures as they are now.
        for (int changed : kRunningBoxes) form_.parameters.DeleteField("box" + std::to_string(changed));
        SetOutcome({"Les chiffres en cours ont changé depuis l'affichage de la déclaration : vérifiez les cases 1, 6 "
                    "et 8.",
                    ""},
                   false);
        return false;
      }
      given.box[box].reset();  // taken from the running figures, and out of them once accepted
    }
    if (form_.GetParam("declare").empty()) {
      SetOutcome({"Cochez la déclaration avant d'envoyer la déclaration de TVA.", ""}, false);
      return false;
    }
    FKVatReturns sent = FKVatReturnToSubmit(profile, period, given);
    LProcessInterfaceVoid process;
    FKVatAlert alert;
    std::string receipt;
    if (!FKVatSubmitReturn(profile, process, period, given, alert, &receipt)) {
      SetOutcome(alert, false);
      return false;
    }
    SetOutcome(alert, true);
    WriteOutcome();
    WriteReceipt(receipt);
    LReportTable table;
    FKReportVatReturn(sent, table);
    form_.Write(LReportWriteHtml(table, {profile.GetCurrencyFormat(), false}));
    form_.Write("<p class=reportlinks><a href='vatreturn' class=actionlink>Déclaration de TVA</a></p>");
    return true;
  }

  // HMRC's receipt: what it answered about the return it took.
  void WriteReceipt(const std::string& receipt) {
    nlohmann::json answer = nlohmann::json::parse(receipt, nullptr, false);
    if (!answer.is_object()) return;
    form_.Write("<table class=vatreceipt id=receipt><caption>Accusé de réception de HMRC</caption>");
    for (const char* field : {"processingDate", "formBundleNumber", "paymentIndicator", "chargeRefNumber"}) {
      auto found = answer.find(field);
      if (found != answer.end() && found->is_string())
        form_.wfprintf("<tr><th>%s</th><td>%H</td></tr>", field, found->get<std::string>().c_str());
    }
    form_.Write("</table>");
  }

  void WriteForm(const std::vector<std::unique_ptr<LVATObligation>>& open, const std::string& period,
                 const FKVatReturns& running) {
    std::string options;
    for (const auto& obligation : open) {
      std::string key = obligation->GetPeriodKey();
      options += LWebFormat("<option value='%H'%s>%H (du %H au %H, à déposer avant le %H)</option>", key.c_str(),
                            key == period ? " selected" : "", key.c_str(), obligation->GetString("StartDate").c_str(),
                            obligation->GetString("EndDate").c_str(), obligation->GetString("DueDate").c_str());
    }
    form_.wfprintf("<form method=post action='vatsubmit' class=vatform id=vatsubmitform>"
                   "<p><label for=period>Période :</label> <select id=period name=period>%s</select></p>"
                   "<p class=dlgsmall>Les cases 1, 6 et 8 reprennent les ventes enregistrées depuis la dernière "
                   "déclaration ; chaque case peut être corrigée. Cases 1 à 5 en livres et pence, 6 à 9 en livres "
                   "entières.</p><table class=vatboxes>",
                   options.c_str());
    for (int box = 1; box <= 9; ++box) {
      std::string id = "box" + std::to_string(box);
      std::string value = form_.GetParam(id, BoxText(running, box));
      form_.wfprintf("<tr><td><label for=%s>%H</label></td><td><input id=%s name=%s value='%H' size=14 "
                     "inputmode=decimal class=amount></td></tr>",
                     id.c_str(), FKVatBoxLabel(box), id.c_str(), id.c_str(), value.c_str());
    }
    form_.Write("</table>");
    for (int box : kRunningBoxes)
      form_.wfprintf("<input type=hidden name=shown%d value='%H'>", box, BoxText(running, box).c_str());
    form_.Write("<p><label><input type=checkbox name=declare id=declare value=1> En envoyant cette déclaration, "
                "je certifie que ses informations sont exactes et complètes ; une fausse déclaration peut entraîner "
                "des poursuites.</label></p>"
                "<p><input type=submit name=submit value='Envoyer la déclaration à HMRC' class='button okbutton'> "
                "<a href='vatreturn' class=actionlink>Annuler</a></p></form>");
    // Box 3 is box 1 plus box 2, box 5 the difference of boxes 3 and 4, while they are typed.
    AddJScript(
        "function VatBox(n) {var v = parseFloat(document.getElementById('box' + n).value.replace(',', '.')); "
        "return isNaN(v) ? 0 : v;}\n"
        "function VatTotals() {var total = VatBox(1) + VatBox(2); document.getElementById('box3').value = total.toFixed(2); "
        "document.getElementById('box5').value = Math.abs(total - VatBox(4)).toFixed(2);}\n"
        "['box1', 'box2', 'box4'].forEach(function(id) {LAddEventListener(document.getElementById(id), 'input', "
        "VatTotals);});\n");
  }
};

// ---- vatview -------------------------------------------------------------------------------------

class LWebVatViewPage : public LWebVatPage {
 public:
  explicit LWebVatViewPage(LWebletForm& form) : LWebVatPage(form, "Déclaration de TVA transmise") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    std::vector<std::unique_ptr<LVATObligation>> fulfilled = FKVatObligationsWithStatus(profile, true);
    std::string period = form_.GetParam("period");
    FKVatReturns vatReturn;
    bool shown = false;
    if (fulfilled.empty()) {
      SetOutcome({"No fulfilled obligations found", ""}, false);
    } else if (!period.empty()) {
      std::string refusal;
      LProcessInterfaceVoid process;
      FKMTDforVATDlg dialog(profile, process);
      if (!FKVatChoosePeriod(profile, period, true, refusal)) SetOutcome({refusal, ""}, false);
      else if (!(shown = dialog.ViewVatReturn(period, vatReturn))) SetOutcome(dialog.Alert(), false);
    }
    WriteOutcome();
    if (!fulfilled.empty()) {
      std::string options;
      for (const auto& obligation : fulfilled) {
        std::string key = obligation->GetPeriodKey();
        options += LWebFormat("<option value='%H'%s>%H (du %H au %H)</option>", key.c_str(),
                              key == period ? " selected" : "", key.c_str(),
                              obligation->GetString("StartDate").c_str(), obligation->GetString("EndDate").c_str());
      }
      form_.wfprintf("<form method=get action='vatview' class=vatform><p><label for=period>Période :</label> "
                     "<select id=period name=period>%s</select> <input type=submit value='Afficher' class='button okbutton'></p></form>",
                     options.c_str());
    }
    if (shown) {
      LReportTable table;
      FKReportVatReturn(vatReturn, table);
      form_.Write(LReportWriteHtml(table, {profile.GetCurrencyFormat(), false}));
    }
    form_.Write("<p class=reportlinks><a href='vatreturn' class=actionlink>Déclaration de TVA</a></p>");
  }
};

// The return of the business's country.
void WLVatReturn(LWebletForm& form) {
  LProfile profile(WLSessionBusinessFolder(form));
  LOptions options;
  options.OpenFrom(profile);
  if (options.GetString("CountryCode") == "GB") WLWebPageRun<LWebVatHomePage>(form);
  else WLWebPageRun<LWebVatCa3Page>(form);
}

const LWebletRoute kVatRoutes[] = {
    {"vatreturn", WLVatReturn},
    {"vatsettings", WLWebPageRun<LWebVatSettingsPage>},
    {"vatauth", WLWebPageRun<LWebVatAuthPage>},
    {"vatobligations", WLWebPageRun<LWebVatObligationsPage>},
    {"vatsubmit", WLWebPageRun<LWebVatSubmitPage>},
    {"vatview", WLWebPageRun<LWebVatViewPage>},
};

}  // namespace

void LSalesInstallVatReturnPages() { LWebletInstallScripts(kVatRoutes); }
