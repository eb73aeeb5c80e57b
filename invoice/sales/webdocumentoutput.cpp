#include "invoice/sales/webdocumentoutput.h"

#include <algorithm>

#include "accounts/webpagemainex.h"
#include "invoice/sales/documentprint.h"
#include "invoice/sales/documentsend.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/company.h"
#include "invoice/shared/documentform.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/printformat.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/totals.h"
#include "llib/gen/filestore.h"
#include "llib/gen/process.h"
#include "llib/web/webdownload.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kToControl = 101;
constexpr int kSubjectControl = 102;
constexpr int kBodyControl = 103;
constexpr int kFacturXControl = 104;
constexpr std::size_t kPrintLogRows = 500;

// The kind a request names with "kind" (the command word); invoices by default.
const LSalesDocumentKind& KindOf(const LWebletForm& form) {
  const LSalesDocumentKind* kind = LSalesDocumentKindFromCommand(form.GetParam("kind", "invoice"));
  return kind != nullptr ? *kind : LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
}

std::string KindQuery(const LSalesDocumentKind& kind, std::string_view key) {
  return LWebFormat("kind=%U&id=%U", std::string(kind.command).c_str(), std::string(key).c_str());
}

// The answer of a print route: the PDF, or the page the user came from with the reason.
void SendForm(LWebletForm& form, bool made, const LPrintedForm& printed, const std::string& error,
              const std::string& back) {
  if (!made) {
    WLRedirect(form, back + (back.find('?') == std::string::npos ? "?" : "&") + LWebFormat("msg=%U", error.c_str()));
    return;
  }
  (void)WLSendDownload(form, "application/pdf", printed.fileName, printed.pdf);
}

std::string DocumentPage(const LSalesDocumentKind& kind, std::string_view key) {
  return LWebFormat("%sprop?id=%U", std::string(kind.command).c_str(), std::string(key).c_str());
}

// ---- PDF routes --------------------------------------------------------------------------------

void WLGeneratePdf(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  const LSalesDocumentKind& kind = KindOf(form);
  std::string key = form.GetParam("id");
  std::optional<LFacturXProfile> facturX;
  if (form.GetParam("facturx") == "1") facturX = LFacturXProfile::kEn16931;
  LPrintedForm printed;
  std::string error;
  bool made = LPrintSalesDocument(profile, kind, key, facturX, form.GetParam("form"), WLSessionUserName(form), printed,
                                  &error);
  SendForm(form, made, printed, error, "invoiceprintview?" + KindQuery(kind, key));
}

void WLReceiptSaveAsPdf(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LPrintedForm printed;
  std::string error;
  bool made = LPrintReceipt(profile, form.GetParam("id"), WLSessionUserName(form), printed, &error);
  SendForm(form, made, printed, error, "paymentlist");
}

void ParcelPdf(LWebletForm& form, bool label) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  const LSalesDocumentKind& kind = KindOf(form);
  std::string key = form.GetParam("id");
  LPrintedForm printed;
  std::string error;
  bool made = LPrintPackingSlip(profile, kind, key, label, WLSessionUserName(form), printed, &error);
  SendForm(form, made, printed, error, "invoiceprintview?" + KindQuery(kind, key));
}

void WLPackingSlipSaveAsPdf(LWebletForm& form) { ParcelPdf(form, false); }
void WLShipLabelSaveAsPdf(LWebletForm& form) { ParcelPdf(form, true); }

// ---- Pages -------------------------------------------------------------------------------------

// A page about one document: its title names it, a missing one says so.
class LWebDocumentPage : public LWebPageMainEx {
 public:
  LWebDocumentPage(LWebletForm& form, std::string_view title)
      : LWebPageMainEx(form, std::string(KindOf(form).command) + "list", title), kind_(KindOf(form)) {}

 protected:
  // Opens the document and writes the page about it, or why there is none.
  void Generate() final {
    key_ = form_.GetParam("id");
    if (std::string message = form_.GetParam("msg"); !message.empty())
      form_.Write(LWebFormat("<p class=errormessage id=pagemessage>%H</p>", message.c_str()));
    LProfile profile(WLSessionBusinessFolder(form_));
    LSalesDocument document;
    if (LSalesDocumentOpen(profile, kind_, key_, document)) GenerateDocument(profile, document);
    else form_.Write(LWebFormat("<p class=errormessage>%H</p>", LSalesDocumentNotFoundMessage(key_).c_str()));
  }
  virtual void GenerateDocument(LProfile& profile, const LSalesDocument& document) = 0;
  std::string OutputLinks() const {
    std::string query = KindQuery(kind_, key_);
    return LWebFormat("<p class=documentlinks><a href='generatepdf?%s' class=actionlink id=pdflink>Télécharger le PDF</a> "
                      "<a href='recordemailinfo?%s' class=actionlink id=emaillink>Envoyer par courriel</a> "
                      "<a href='invoicelog?%s' class=actionlink id=loglink>Historique</a> "
                      "<a href='%s' class=actionlink>Retour au document</a></p>",
                      query.c_str(), query.c_str(), query.c_str(), DocumentPage(kind_, key_).c_str());
  }

  const LSalesDocumentKind& kind_;
  std::string key_;
};

// "invoiceprintview": the document as it prints, in the browser.
class LWebPrintViewPage : public LWebDocumentPage {
 public:
  explicit LWebPrintViewPage(LWebletForm& form) : LWebDocumentPage(form, "Aperçu avant impression") {}
  void GenerateDocument(LProfile& profile, const LSalesDocument& document) override {
    LPrintFormat format(profile);
    LCompany company;
    company.OpenFrom(profile);
    LRecord party;
    std::string_view partyList = kind_.type == LSalesDocumentType::kPOrder ? "Suppliers" : "Customers";
    (void)profile.MainList(partyList).Open(party, document.GetCustomer());  // absent: its key is shown
    std::string partyName = party.GetString("Name").empty() ? document.GetCustomer() : party.GetString("Name");
    std::string links = OutputLinks();
    if (kind_.type == LSalesDocumentType::kInvoice || kind_.type == LSalesDocumentType::kOrder) {
      std::string query = KindQuery(kind_, key_);
      links.insert(links.size() - 4, LWebFormat(" <a href='packingslipsaveaspdf?%s' class=actionlink>Bon de livraison</a> "
                                                "<a href='shiplabelinstructions?%s' class=actionlink>Étiquette d'expédition</a>",
                                                query.c_str(), query.c_str()));
    }
    form_.Write(links + "<p><a href='javascript:window.print()' class=actionlink>Imprimer cette page</a></p>");
    form_.Write(LWebFormat("<div class=printview><table width='100%%'><tr><td valign=top><b>%H</b><br>%H</td>"
                           "<td valign=top align=right><h2 id=printtitle>%H N° %H</h2>Date : %H</td></tr>"
                           "<tr><td></td><td valign=top align=right><b id=printparty>%H</b><br>%H</td></tr></table>",
                           company.GetName().c_str(), company.GetAddress().c_str(), std::string(kind_.title).c_str(),
                           key_.c_str(), format.Date(document.GetDate()).c_str(), partyName.c_str(),
                           party.GetString("Address").c_str()));
    form_.Write("<table class=printlines width='100%' border=1 cellspacing=0 cellpadding=3><tr><th>Réf.</th>"
                "<th>Désignation</th><th>Qté</th><th>P.U.</th><th>Total</th></tr>");
    LFKItemCollectionRecord items = document.Items();
    for (int i = 0; i < items.GetItemCount(); ++i) {
      long long total = LFKDocumentLineTotal(items, i, true, profile.GetCurrencyDigits());
      form_.Write(LWebFormat("<tr><td>%H</td><td>%H</td><td align=right>%H</td><td align=right>%H</td>"
                             "<td align=right>%H</td></tr>",
                             items.GetItemCode(i).c_str(), items.GetItemDescription(i).c_str(),
                             format.Quantity(items.GetItemQty(i)).c_str(),
                             format.UnitPrice(items.GetItemUnitValue(i), items.GetItemUnitValueDigits(i)).c_str(),
                             format.Money(total).c_str()));
    }
    long long total = document.GetTotal(), tax = document.GetTaxTotal();
    form_.Write(LWebFormat("</table><table align=right class=printtotals><tr><td>Total HT</td><td align=right>%H</td></tr>"
                           "<tr><td>TVA</td><td align=right>%H</td></tr><tr><td><b>Total TTC</b></td>"
                           "<td align=right><b id=printtotal>%H</b></td></tr></table></div>",
                           format.Money(total - tax).c_str(), format.Money(tax).c_str(), format.Money(total).c_str()));
  }
};

// "shiplabelinstructions": how to print the label, and its link.
class LWebShipLabelInstructionsPage : public LWebDocumentPage {
 public:
  explicit LWebShipLabelInstructionsPage(LWebletForm& form) : LWebDocumentPage(form, "Étiquette d'expédition") {}
  void GenerateDocument(LProfile&, const LSalesDocument& document) override {
    std::string query = KindQuery(kind_, key_);
    std::string tracking = document.GetString("TrackingRef");
    form_.Write(LWebFormat(
        "<ol class=instructions><li>Ouvrez l'étiquette : <a href='shiplabelsaveaspdf?%s' class=actionlink id=labellink>"
        "Étiquette %H (PDF)</a>.</li><li>Imprimez-la à 100 %% (taille réelle, sans « ajuster à la page »), sur une "
        "feuille A4 ou une planche d'étiquettes.</li><li>Collez-la à plat sur la plus grande face du colis, sans la "
        "recouvrir de ruban adhésif sur l'adresse.</li><li>Glissez le bon de livraison dans le colis : <a "
        "href='packingslipsaveaspdf?%s' class=actionlink>Bon de livraison (PDF)</a>.</li></ol>%s",
        query.c_str(), key_.c_str(), query.c_str(),
        tracking.empty() ? "<p>Aucun numéro de suivi n'est enregistré sur ce document.</p>"
                         : LWebFormat("<p>Numéro de suivi : <b>%H</b></p>", tracking.c_str()).c_str()));
  }
};

std::string EmailStateText(const LDocumentHistory& history) {
  if (history.emailState == "sent") return "Envoyé";
  if (history.emailState == "pending") return "En attente d'envoi";
  if (history.emailState == "failed") return "Échec : " + history.emailError;
  return "Jamais envoyé";
}

// "invoicelog": the history of one document.
class LWebDocumentLogPage : public LWebDocumentPage {
 public:
  explicit LWebDocumentLogPage(LWebletForm& form) : LWebDocumentPage(form, "Historique du document") {}
  void GenerateDocument(LProfile& profile, const LSalesDocument& document) override {
    std::string_view list = document.IsDraft() ? kind_.draftsList : kind_.recordedList;
    LDocumentHistory history = LDocumentHistoryRead(profile, list, key_);
    form_.Write(LWebFormat("<h2>%H %H</h2>%s<p>Courriel : <b id=emailstate>%H</b></p>", std::string(kind_.title).c_str(),
                           key_.c_str(), OutputLinks().c_str(), EmailStateText(history).c_str()));
    form_.Write("<table class=historylist id=history border=1 cellspacing=0 cellpadding=3><tr><th>Date</th>"
                "<th>Utilisateur</th><th>Action</th><th>Détail</th></tr>");
    for (const LDocumentHistoryEvent& event : history.events)
      form_.Write(LWebFormat("<tr><td>%H</td><td>%H</td><td>%H</td><td>%H</td></tr>", event.time.c_str(),
                             event.user.c_str(), event.action.c_str(), event.detail.c_str()));
    form_.Write("</table>");
  }
};

// "invoiceprintlog": the printings and mailings of every document, latest first.
class LWebPrintLogPage : public LWebPageMainEx {
 public:
  explicit LWebPrintLogPage(LWebletForm& form)
      : LWebPageMainEx(form, "invoicelist", "Journal des impressions et des envois") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    struct Row {
      LDocumentHistoryEvent event;
      std::string document;
    };
    std::vector<Row> rows;
    LFileStoreListBase histories = profile.List(kDocumentHistoryList);
    LRecord record;
    for (LFileStoreIteratorBase it(histories, record); record.IsAttached(); it.Next(record)) {
      std::string document = record.GetPrimaryKey();
      std::size_t slash = document.find('/');
      if (slash == std::string::npos) continue;
      for (LDocumentHistoryEvent& event :
           LDocumentHistoryRead(profile, document.substr(0, slash), document.substr(slash + 1)).events)
        if (event.action != kHistoryCreated && event.action != kHistoryRecorded) rows.push_back({std::move(event), document});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.event.time > b.event.time; });
    if (rows.size() > kPrintLogRows) rows.resize(kPrintLogRows);
    form_.Write("<table class=historylist id=printlog border=1 cellspacing=0 cellpadding=3><tr><th>Date</th>"
                "<th>Document</th><th>Utilisateur</th><th>Action</th><th>Détail</th></tr>");
    for (const Row& row : rows)
      form_.Write(LWebFormat("<tr><td>%H</td><td>%H</td><td>%H</td><td>%H</td><td>%H</td></tr>", row.event.time.c_str(),
                             row.document.c_str(), row.event.user.c_str(), row.event.action.c_str(),
                             row.event.detail.c_str()));
    form_.Write("</table>");
    if (rows.empty()) form_.Write("<p>Aucun document n'a encore été imprimé ni envoyé.</p>");
  }
};

// ---- E-mail ------------------------------------------------------------------------------------

// "recordemailinfo": the mail of one document, sent when the user confirms.
class LWebRecordEmailDialog : public LWebDialogEx {
 public:
  explicit LWebRecordEmailDialog(LWebletForm& form)
      : LWebDialogEx(form, "recordemailinfo"), kind_(KindOf(form)), key_(form.GetParam("id")) {
    SetTitle("Envoyer " + std::string(kind_.title) + " " + key_ + " par courriel");
    SetOkText("Envoyer");
    SetCancelPage(DocumentPage(kind_, key_));
    SetOkPage("invoicelog?" + KindQuery(kind_, key_) + "&msg=" +
              LWebFormat("%U", (std::string(kind_.title) + " " + key_ + " envoyé par courriel.").c_str()));
  }
  void InitDialog() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LSalesDocument document;
    if (!LSalesDocumentOpen(profile, kind_, key_, document)) {
      SetMessage(LSalesDocumentNotFoundMessage(key_));
      return;
    }
    LDocumentMail mail = LDocumentMailDefaults(profile, kind_, document);
    SetText(kToControl, mail.to);
    SetText(kSubjectControl, mail.subject);
    SetText(kBodyControl, mail.body);
    SetCheck(kFacturXControl, mail.facturX);
  }
  void Generate() override {
    AddHiddenField("kind", kind_.command);
    AddHiddenField("id", key_);
    AddInput(kToControl, "Destinataires :", "", 50);
    AddInput(kSubjectControl, "Objet :", "", 50);
    AddEdit(kBodyControl, "Message :", 60, 8);
    AddStatic("Pièce jointe : " + LSalesDocumentPdfName(kind_, key_));
    if (kind_.type == LSalesDocumentType::kInvoice || kind_.type == LSalesDocumentType::kCreditNote)
      AddCheckBox(kFacturXControl, "Joindre la facture électronique Factur-X (PDF/A-3)");
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LDocumentMail mail;
    mail.to = GetTextAndTrim(kToControl);
    mail.subject = GetTextAndTrim(kSubjectControl);
    mail.body = GetText(kBodyControl);
    if (mail.to.empty()) {
      PopupControlDataInvalid(kToControl, "Veuillez indiquer au moins un destinataire.");
      return false;
    }
    LProcessInterfaceRecorder process;
    LProcessResult result =
        LSendSalesDocument(process, profile, kind_, key_, mail, IsChecked(kFacturXControl), WLSessionUserName(form_));
    if (result == kProcessFinished) return true;
    PopupControlDataInvalid(kToControl, "Le courriel n'est pas parti : " + process.GetError());
    return false;
  }

 private:
  const LSalesDocumentKind& kind_;
  std::string key_;
};

// "recordemailfromlist": the selected documents of a list, queued each to its customer.
void WLRecordEmailFromList(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LSalesDocumentKind& kind = KindOf(form);
  std::string back = std::string(kind.command) + "list";
  if (!WLMayChangeData(form)) {
    WLRedirect(form, back + LWebFormat("?msg=%U", kWebViewerRefusal));
    return;
  }
  LProfile profile(WLSessionBusinessFolder(form));
  std::vector<std::string> keys;
  for (const auto& [name, value] : form.parameters)
    if (name.starts_with("sel_") && value == "1") keys.push_back(name.substr(4));
  int queued = 0;
  std::string refused;
  for (const std::string& key : keys) {
    std::string message;
    if (LQueueSalesDocumentMail(profile, kind, key, {}, std::nullopt, WLSessionUserName(form), &message)) ++queued;
    else refused += " " + key + " : " + message;
  }
  std::string summary = keys.empty() ? "Aucun document sélectionné."
                                     : std::to_string(queued) + " document(s) en cours d'envoi par courriel." +
                                           (refused.empty() ? "" : " Non envoyés :" + refused);
  WLRedirect(form, back + LWebFormat("?msg=%U", summary.c_str()));
}

}  // namespace

void LSalesInstallDocumentOutputPages() {
  static const LWebletRoute kRoutes[] = {
      {"invoiceprintview", WLWebPageRun<LWebPrintViewPage>},
      {"generatepdf", WLGeneratePdf},
      {"receiptsaveaspdf", WLReceiptSaveAsPdf},
      {"packingslipsaveaspdf", WLPackingSlipSaveAsPdf},
      {"shiplabelsaveaspdf", WLShipLabelSaveAsPdf},
      {"shiplabelinstructions", WLWebPageRun<LWebShipLabelInstructionsPage>},
      {"invoicelog", WLWebPageRun<LWebDocumentLogPage>},
      {"invoiceprintlog", WLWebPageRun<LWebPrintLogPage>},
      {"recordemailinfo", WLWebDialogRun<LWebRecordEmailDialog>},
      {"recordemailfromlist", WLRecordEmailFromList},
  };
  LWebletInstallScripts(kRoutes);
}
