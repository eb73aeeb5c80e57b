#include "invoice/sales/websalesdocuments.h"

#include <algorithm>

#include "accounts/bills.h"
#include "accounts/porderbill.h"
#include "accounts/websuppliers.h"
#include "invoice/sales/porderconversion.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesconversion.h"
#include "invoice/sales/webcustomers.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/documentinput.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kCustomerControl = 101;
constexpr int kDateControl = 102;
constexpr int kTermsControl = 103;
constexpr int kShippingControl = 104;
constexpr int kUntaxedControl = 105;
constexpr int kNotesControl = 106;
constexpr int kDraftControl = 107;
constexpr int kTotalsControl = 108;
constexpr int kSalesPersonControl = 109;

std::string Route(const LSalesDocumentKind& kind, std::string_view suffix) {
  return std::string(kind.command) + std::string(suffix);
}

// The kind's name in the plural and with its article, for titles and links.
struct KindWords {
  const char* plural;
  const char* fresh;  // "Nouvelle facture"
  const char* none;   // "Aucune facture"
};

KindWords WordsOf(LSalesDocumentType type) {
  switch (type) {
    case LSalesDocumentType::kInvoice: return {"Factures", "Nouvelle facture", "Aucune facture"};
    case LSalesDocumentType::kOrder: return {"Commandes", "Nouvelle commande", "Aucune commande"};
    case LSalesDocumentType::kQuote: return {"Devis", "Nouveau devis", "Aucun devis"};
    case LSalesDocumentType::kCreditNote: return {"Avoirs", "Nouvel avoir", "Aucun avoir"};
    case LSalesDocumentType::kPOrder: break;
  }
  return {"Bons de commande", "Nouveau bon de commande", "Aucun bon de commande"};
}

// The conversions a quote or an order offers: a quote becomes an order (or shows the order it
// became), both become an invoice.
std::string ConversionLinks(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document) {
  const std::string& key = document.GetPrimaryKey();
  std::string links;
  if (kind.type == LSalesDocumentType::kQuote) {
    std::string order = document.GetString(kConvertedOrderField);
    LSalesDocument existing;
    if (!order.empty() && LSalesDocumentOpen(profile, LSalesDocumentKindOf(LSalesDocumentType::kOrder), order, existing)) {
      existing.DetachWithoutSave();
      links = LWebFormat("<a href='orderprop?id=%U'>Commande %H</a> ", order.c_str(), order.c_str());
    } else {
      links = LWebFormat("<a href='quoteco?id=%U' class=actionlink>Commander</a> ", key.c_str());
    }
  }
  return links + LWebFormat("<a href='%sci?id=%U' class=actionlink>Facturer</a>", kind.command.data(), key.c_str());
}

}  // namespace

// ---- "<kind>list" ---------------------------------------------------------------------------------

const LWebPeriodList& LWebSalesPeriodList(LSalesDocumentType type) {
  switch (type) {
    case LSalesDocumentType::kQuote: return kLWebQuotePeriodList;
    case LSalesDocumentType::kOrder: return kLWebOrderPeriodList;
    case LSalesDocumentType::kCreditNote: return kLWebCreditNotePeriodList;
    case LSalesDocumentType::kPOrder: return kLWebPOrderPeriodList;
    default: return kLWebInvoicePeriodList;
  }
}

LWebSalesDocumentsPage::LWebSalesDocumentsPage(LWebletForm& form, LSalesDocumentType type)
    : LWebPageMainEx(form, Route(LSalesDocumentKindOf(type), "list"), WordsOf(type).plural),
      kind_(LSalesDocumentKindOf(type)) {}

const LWebPeriodList& LWebSalesDocumentsPage::PeriodList() const { return LWebSalesPeriodList(kind_.type); }

void LWebSalesDocumentsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string newLink = WLMayChangeData(form_) ? LWebFormat("<a href='%sprop' class=actionlink>%H</a> ",
                                                            kind_.command.data(), WordsOf(kind_.type).fresh)
                                               : std::string();
  if (kind_.type == LSalesDocumentType::kInvoice)
    newLink += "<a href='searchinvoices' class=actionlink>Rechercher</a> "
               "<a href='invoiceschedule' class=actionlink>Factures récurrentes</a>";
  if (kind_.type == LSalesDocumentType::kOrder)
    newLink += "<a href='orderschedule' class=actionlink>Commandes récurrentes</a>";
  UseListScript();
  LWebWritePeriodListPage(form_, profile, PeriodList(), newLink, [this](LWebletForm& out) { WriteListBlock(out); });
  // The boxes ticked in the list's "Courriel" column name the documents to mail.
  if (WLMayChangeData(form_))
    form_.Write(LWebFormat("<form id=emailselection method=post action='recordemailfromlist'><input type=hidden name=kind "
                           "value='%s'><input type=submit class=button id=emailselected value='Envoyer la sélection par "
                           "courriel'> <a href='invoiceprintlog' class=actionlink>Journal des impressions et des envois</a>"
                           "</form>",
                           kind_.command.data()));
}

void LWebSalesDocumentsPage::WriteListBlock(LWebletForm& out) {
  LProfile profile(WLSessionBusinessFolder(form_));
  const KindWords words = WordsOf(kind_.type);
  const bool isInvoice = kind_.type == LSalesDocumentType::kInvoice;
  const bool converts = kind_.type == LSalesDocumentType::kQuote || kind_.type == LSalesDocumentType::kOrder;
  // A purchase order names a supplier, and becomes a bill rather than an invoice.
  const bool purchase = kind_.type == LSalesDocumentType::kPOrder;
  const bool mayChange = WLMayChangeData(form_);
  LWebListFilter filter = LWebReadListFilter(form_, profile, PeriodList());

  LHtmlList list(form_, 0, false);
  list.AddColumn("Numéro", 12, kListAlignLeft, true);
  list.AddColumn("Date", 12, kListAlignLeft, true);
  list.AddColumn(purchase ? "Fournisseur" : "Client", isInvoice || converts || purchase ? 30 : 46, kListAlignLeft,
                 true);
  list.AddColumn("Total", 14, kListAlignRight, true);
  if (isInvoice) list.AddColumn("Reste dû", 14, kListAlignRight, true);
  if (isInvoice) list.AddColumn("État", 12, kListAlignLeft, true);
  if (converts || purchase) list.AddColumn("Facture", 16, kListAlignLeft, true);
  list.AddColumn("Courriel", 12, kListAlignLeft, true);
  list.AddColumn("", 10, kListAlignCenter, false);
  long long sum = 0;
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  for (std::string_view listName : {kind_.recordedList, kind_.draftsList}) {
    const LFileStoreListBase& records = profile.MainList(listName);
    auto inPeriod = [&filter](std::string_view date) { return filter.Holds(date); };
    for (const std::string& dated : LDocumentKeysDated(profile, listName, inPeriod)) {
      LSalesDocument document;
      if (!records.Open(document, dated)) continue;  // deleted meanwhile
      std::string date = document.GetDate();
      if (date.size() > 10) date.resize(10);
      if (!filter.Holds(date) || (!filter.party.empty() && document.GetCustomer() != filter.party)) continue;
      const std::string& key = document.GetPrimaryKey();
      bool draft = document.IsDraft();
      long long total = document.GetTotal();
      sum += total;
      auto row = std::make_unique<LHtmlListRow>();
      row->AddCell(LHtmlListRow::RecordKeyOrderKey(key), LWebFormat("<a href='%sprop?id=%U'>%H</a>%s", kind_.command.data(), key.c_str(),
                                             key.c_str(), draft ? " <span class=draftmark>brouillon</span>" : ""));
      row->AddCellText(date);
      row->AddCellText(document.GetCustomer());
      row->AddCell(LHtmlListRow::Int64OrderKey(total), LHtmlEscape(LFormatMoney(total, money)));
      if (isInvoice) {
        long long due = draft ? total : total - document.GetAmountPaid(profile) - document.GetAmountRefunded(profile);
        row->AddCell(LHtmlListRow::Int64OrderKey(due), LHtmlEscape(LFormatMoney(due, money)));
        row->AddCellText(draft ? "Brouillon" : LInvoiceStatusText(LInvoiceGetStatus(profile, document)));
      }
      if (converts) {
        std::string invoice = LConvertedInvoiceKey(document);
        if (!invoice.empty())
          row->AddCell(LHtmlListRow::RecordKeyOrderKey(invoice), LWebFormat("<a href='invoiceprop?id=%U'>%H</a>", invoice.c_str(),
                                                     invoice.c_str()));
        else if (mayChange)
          row->AddCell("", ConversionLinks(profile, kind_, document));
        else
          row->AddCell("", "");
      }
      if (purchase) {
        std::string bill = document.GetString(kPOrderBillField);
        if (!bill.empty() && profile.List(kBillsList).TestRecordExists(bill))
          row->AddCell(LHtmlListRow::RecordKeyOrderKey(bill),
                       LWebFormat("<a href='billprop?id=%U'>%H</a>", bill.c_str(), bill.c_str()));
        else if (mayChange && !draft)
          row->AddCell("", LWebFormat("<a href='porderbill?id=%U' class=actionlink>Facturer</a>", key.c_str()));
        else
          row->AddCell("", "");
      }
      LDocumentHistory history = LDocumentHistoryRead(profile, listName, key);
      std::string state = history.emailState == "sent"      ? "envoyé"
                          : history.emailState == "pending" ? "en attente"
                          : history.emailState == "failed"  ? "échec"
                                                            : "";
      std::string select = mayChange ? LWebFormat("<input type=checkbox name='sel_%H' value=1 form=emailselection> ", key.c_str())
                                     : std::string();
      row->AddCell(state, select + LWebFormat("<span class=emailstate title='%H'>%H</span>", history.emailError.c_str(),
                                              state.c_str()));
      if (mayChange)
        row->AddCell("", LWebFormat("<a href='%sdelete?id=%U' class=deletelink onclick=\"return confirm('%s')\">"
                                    "Supprimer</a>",
                                    kind_.command.data(), key.c_str(),
                                    LHtmlEscape(LJScriptEscape(std::string(kind_.title) + " " + key +
                                                               " : supprimer ?")).c_str()));
      else
        row->AddCell("", "");
      list.AddRow(std::move(row));
    }
  }
  std::size_t count = list.GetRowCount();
  std::string summary = count == 0 ? std::string(words.none) + " sur la période."
                                   : std::to_string(count) + " document(s), total " + LFormatMoney(sum, money);
  LWebWritePagedRows(out, list, PeriodList(), filter, summary);
}

// ---- "<kind>prop" ---------------------------------------------------------------------------------

LWebSalesDocumentDialog::LWebSalesDocumentDialog(LWebletForm& form, LSalesDocumentType type)
    : LWebDialogFK(form, Route(LSalesDocumentKindOf(type), "prop")), kind_(LSalesDocumentKindOf(type)) {
  std::string key = EditedKey();
  SetTitle(key.empty() ? std::string(WordsOf(type).fresh) : std::string(kind_.title) + " " + key);
  SetOkPage(Route(kind_, "list"));
  SetCancelPage(Route(kind_, "list"));
  SetOkText("Enregistrer");
  if (!WLMayChangeData(form)) SetMessage(kWebViewerRefusal);
}

std::string LWebSalesDocumentDialog::EditedKey() const { return form_.GetParam("id"); }

void LWebSalesDocumentDialog::PrintHeader() {
  LWebDialogFK::PrintHeader();
  WLWriteNavTabs(form_, Route(kind_, "list"));
}

std::string LWebSalesDocumentDialog::DraftName() const {
  return LWebSalesDocumentDraftName(kind_.type, EditedKey());
}

void LWebSalesDocumentDialog::InitDialog() {
  std::string key = EditedKey();
  // What was typed and not saved comes back, unless the user lets it go.
  std::string draft = form_.session.GetString(DraftName(), "");
  if (form_.GetParam("discard") == "1") {
    if (!draft.empty()) form_.session.DeleteField(DraftName());
  } else if (!draft.empty()) {
    form_.parameters.LoadHTTPString(draft);
    SetMessage("Les valeurs saisies et non enregistrées ont été reprises.");
    draftRestored_ = true;
    return;
  }
  LSalesDocument document;
  if (key.empty()) {
    SetText(kDateControl, LDate::Today().ToText());
    SetCheck(kDraftControl, false);
    return;
  }
  if (!LSalesDocumentOpen(Profile(), kind_, key, document)) {
    SetMessage(std::string(kind_.title) + " « " + key + " » introuvable.");
    return;
  }
  SetText(kCustomerControl, document.GetCustomer());
  std::string date = document.GetDate();
  SetText(kDateControl, date.substr(0, 10));
  SetText(kTermsControl, document.GetInt("PaymentTerms", 2) == 1 ? "0"
                                                                 : std::to_string(document.GetInt("PaymentTermsDays", 30)));
  if (document.GetShippingCosts() != 0)
    SetText(kShippingControl, LAmountInputText(document.GetShippingCosts(), Profile().GetCurrencyFormat()));
  SetCheck(kUntaxedControl, document.GetDocumentTaxMode() == kDocumentUntaxed);
  SetText(kNotesControl, document.GetString("Notes"));
  SetText(kSalesPersonControl, document.GetString("SalesPerson"));
  SetCheck(kDraftControl, document.IsDraft());
  SetItemLines(document);
  document.DetachWithoutSave();
}

void LWebSalesDocumentDialog::Generate() {
  std::string key = EditedKey();
  AddHiddenField("id", key);
  bool editingRecorded = !key.empty() && !key.starts_with(kDraftKeyPrefix);
  std::vector<std::string> texts, values;
  // A purchase order names a supplier, shown beside its choice; a sales document a customer.
  bool purchase = kind_.type == LSalesDocumentType::kPOrder;
  if (purchase) LWebSupplierChoices(Profile(), texts, values);
  else LWebCustomerChoices(Profile(), texts, values);
  AddPullDownList(kCustomerControl, purchase ? "Fournisseur :" : "Client :", texts, values);
  form_.Write(purchase ? "<tr><td></td><td class=fieldinfo id=supinfo></td></tr>"
                       : "<tr><td></td><td class=fieldinfo id=customerinfo></td></tr>");
  AddDateInput(kDateControl, "Date :", "");
  AddInput(kTermsControl, "Délai de paiement (jours, 0 : à réception) :", "", 6);
  AddItemGrid();
  AddInput(kShippingControl, "Frais de port :", "", 12);
  AddCheckBox(kUntaxedControl, "Hors taxes (aucune taxe sur ce document)");
  AddEdit(kNotesControl, "Notes :", 50, 3);
  if (purchase) {
    AddJScriptFunctionPrintf("LAddEventListener(window, 'onload', function() {LAjaxOnChange(%d, 'cbsupselchange', "
                             "'supplier');});\n",
                             kCustomerControl);
  } else {
    LWebSalesPersonChoices(Profile(), texts, values);
    AddPullDownList(kSalesPersonControl, "Vendeur :", texts, values);
    form_.Write("<tr><td></td><td class=fieldinfo id=salespersoninfo></td></tr>");
    AddJScriptFunctionPrintf("LAddEventListener(window, 'onload', function() {LAjaxOnChange(%d, 'cbcustselchange', "
                             "'customer'); LAjaxOnChange(%d, 'cbuseselchange', 'salesperson');});\n",
                             kCustomerControl, kSalesPersonControl);
  }
  if (!editingRecorded)
    AddCheckBox(kDraftControl, purchase ? "Brouillon (ni reçu, ni facturable)"
                                        : "Brouillon (ni comptabilisé, ni compté dans le solde du client)");
  LSalesDocument document;
  std::string totals = BuildDocument(document, true) ? TotalsHtml(document) : std::string();
  form_.Write(LWebFormat("<tr><td colspan=2><div id=fktotals data-route='%s' data-control=%d>%s</div></td></tr>",
                         GetRouteName().c_str(), kTotalsControl, totals.c_str()));
  if (LSalesDocument stored; !key.empty() && LSalesDocumentOpen(Profile(), kind_, key, stored)) {
    stored.DetachWithoutSave();
    std::string query = LWebFormat("kind=%U&id=%U", kind_.command.data(), key.c_str());
    form_.Write(LWebFormat("<tr><td></td><td class=outputlinks id=outputlinks><a href='invoiceprintview?%s' "
                           "class=actionlink>Aperçu et impression</a> <a href='generatepdf?%s' class=actionlink>PDF</a> "
                           "<a href='recordemailinfo?%s' class=actionlink>Envoyer par courriel</a> "
                           "<a href='invoicelog?%s' class=actionlink>Historique</a></td></tr>",
                           query.c_str(), query.c_str(), query.c_str(), query.c_str()));
  }
  if (!WLMayChangeData(form_)) return;
  // What is typed goes to the session as it is typed (itemgrid.js), so that it survives leaving.
  form_.Write(LWebFormat("<tr><td colspan=2><div id=fkdraft data-route='%s'>%s</div></td></tr>",
                         Route(kind_, "itemssave").c_str(),
                         draftRestored_ ? LWebFormat("<a href='%s?id=%U&discard=1'>Abandonner ces valeurs et "
                                                     "reprendre le document enregistré</a>",
                                                     GetRouteName().c_str(), key.c_str())
                                              .c_str()
                                        : ""));
  if (!editingRecorded) return;
  std::string links = DocumentLinks(key);
  if (!links.empty()) form_.Write("<tr><td></td><td class=documentlinks>" + links + "</td></tr>");
}

std::string LWebSalesDocumentDialog::DocumentLinks(const std::string& key) {
  LSalesDocument document;
  if (!LSalesDocumentOpen(Profile(), kind_, key, document)) return {};
  std::string links;
  if (kind_.type == LSalesDocumentType::kInvoice) {
    long long due = document.GetTotal() - document.GetAmountPaid(Profile()) - document.GetAmountRefunded(Profile());
    links = LWebFormat("Reste dû : <b>%H</b> ", LFormatMoney(due, Profile().GetCurrencyFormat()).c_str());
    if (due > 0)
      links += LWebFormat("<a href='invoicepay?id=%U' class=actionlink>Enregistrer un paiement</a> "
                          "<a href='invoiceapplypayment?id=%U' class=actionlink>Imputer un paiement ou un avoir</a>",
                          key.c_str(), key.c_str());
  } else if ((kind_.type == LSalesDocumentType::kQuote || kind_.type == LSalesDocumentType::kOrder) &&
             LConvertedInvoiceKey(document).empty()) {
    links = ConversionLinks(Profile(), kind_, document);
  }
  if (kind_.type == LSalesDocumentType::kInvoice || kind_.type == LSalesDocumentType::kOrder)
    links += LWebFormat(" <a href='%sschedule?id=%U' class=actionlink>Rendre récurrente</a>", kind_.command.data(),
                        key.c_str());
  document.DetachWithoutSave();
  return links;
}

void LWebSalesDocumentDialog::CmCancel() { form_.session.DeleteField(DraftName()); }

bool LWebSalesDocumentDialog::BuildDocument(LSalesDocument& document, bool quiet) {
  LProfile& profile = Profile();
  std::string key = EditedKey();
  if (!key.empty()) {
    LSalesDocument stored;
    if (!LSalesDocumentOpen(profile, kind_, key, stored)) {
      if (!quiet) PopupBoxError(std::string(kind_.title) + " « " + key + " » introuvable.");
      return false;
    }
    document.CopyRecord(stored);
    stored.DetachWithoutSave();
  }
  // One field at a time, so that a refusal is shown at its own control.
  auto apply = [&](int control, auto fill, bool last) {
    LDocumentInput input;
    fill(input);
    std::string error;
    if (LApplyDocumentInput(profile, kind_, input, last && key.empty(), document, error)) return true;
    if (!quiet) PopupControlDataInvalid(control, error);
    return false;
  };
  std::string customer = GetTextAndTrim(kCustomerControl);
  std::string date = GetTextAndTrim(kDateControl);
  std::string terms = GetTextAndTrim(kTermsControl);
  std::string shipping = GetTextAndTrim(kShippingControl);
  if (!shipping.empty()) shipping = LPlainAmountText(shipping, profile.GetCurrencyFormat());
  if (!apply(kCustomerControl, [&](LDocumentInput& in) { in.customer = customer; }, false) ||
      !apply(kDateControl, [&](LDocumentInput& in) { in.date = date; }, false) ||
      !apply(kTermsControl, [&](LDocumentInput& in) { in.terms = terms == "0" ? "now" : terms; }, false) ||
      !apply(kShippingControl, [&](LDocumentInput& in) { in.shipping = shipping; }, false) ||
      !apply(kSalesPersonControl,
             [&](LDocumentInput& in) {
               // A new document left without one takes its customer's.
               in.salesPerson = GetTextAndTrim(kSalesPersonControl);
               in.hasSalesPerson = !in.salesPerson.empty() || !key.empty();
             },
             false) ||
      !apply(kNotesControl,
             [&](LDocumentInput& in) {
               in.hasNotes = true;
               in.notes = GetText(kNotesControl);
             },
             true))
    return false;
  if (shipping.empty()) document.DeleteField("ShippingCosts");
  if (IsChecked(kUntaxedControl)) document.SetInt("TaxRate", kDocumentUntaxed);
  else document.DeleteField("TaxRate");
  // Outside a button press a refused line only notes its message: the totals then stay as shown.
  return GetItemLines(document);
}

std::string LWebSalesDocumentDialog::TotalsHtml(LSalesDocument& document) {
  LFKTotalsChange totals = LSalesDocumentSumTotals(Profile(), kind_, document);
  const LCurrencyFormat& money = Profile().GetCurrencyFormat();
  std::string html = "<table class=fktotals>";
  auto line = [&](const std::string& label, long long amount, bool strong) {
    html += LWebFormat("<tr%s><td>%H</td><td class=amount>%H</td></tr>", strong ? " class=fktotal" : "", label.c_str(),
                       LFormatMoney(amount, money).c_str());
  };
  line("Sous-total", totals.newSubTotal, false);
  int taxCount = document.GetInt("TaxAmountCount", 3);
  for (int n = 1; n <= taxCount; ++n) {
    std::string name = document.GetString("TaxAmountName" + std::to_string(n));
    long long amount = document.GetInt64("TaxAmount" + std::to_string(n), 0);
    if (!name.empty() || amount != 0) line(name, amount, false);
  }
  if (document.GetShippingCosts() != 0) line("Frais de port", document.GetShippingCosts(), false);
  line("Total", totals.newTotal, true);
  return html + "</table>";
}

void LWebSalesDocumentDialog::CommandAJAX(int controlId, const std::string&) {
  if (controlId == kTotalsControl) WriteTotalsScript();
}

void LWebSalesDocumentDialog::WriteTotalsScript() {
  LSalesDocument document;
  std::string totals = BuildDocument(document, true) ? TotalsHtml(document) : std::string();
  document.DetachWithoutSave();
  if (!totals.empty())
    form_.Write(LWebFormat("document.getElementById('fktotals').innerHTML = '%s';\n", LJScriptEscape(totals).c_str()));
}

bool LWebSalesDocumentDialog::CmOk() {
  if (!SaveDocument()) return false;
  form_.session.DeleteField(DraftName());
  return true;
}

bool LWebSalesDocumentDialog::SaveDocument() {
  if (RefuseViewer()) return false;
  LProfile& profile = Profile();
  std::string error;
  if (!LSalesCheckParty(profile, kind_, GetTextAndTrim(kCustomerControl), &error)) {
    PopupControlDataInvalid(kCustomerControl, error);
    return false;
  }
  LSalesDocument document;
  if (!BuildDocument(document, false)) return false;
  std::string key = EditedKey();
  bool draft = IsChecked(kDraftControl);
  if (key.empty()) {
    std::string newKey;
    if (!LSalesDocumentCreate(profile, kind_, document, draft, "", newKey, &error)) {
      PopupBoxError(error);
      return false;
    }
    return true;
  }
  auto replace = [&](LSalesDocument& stored) { stored.CopyRecord(document); };
  if (!LSalesDocumentEdit(profile, kind_, key, replace, &error)) {
    PopupBoxError(error);
    return false;
  }
  if (key.starts_with(kDraftKeyPrefix) && !draft) {
    std::string newKey;
    if (!LSalesDocumentRecordDraft(profile, kind_, key, newKey, &error)) {
      PopupBoxError(error);
      return false;
    }
  }
  return true;
}

// ---- "<kind>delete", "quoteci", "orderci" -------------------------------------------------------

namespace {

// Back to the kind's list, with message shown above it when there is one.
void BackToList(LWebletForm& form, const LSalesDocumentKind& kind, const std::string& message) {
  std::string target = Route(kind, "list");
  if (!message.empty()) target += LWebFormat("?msg=%U", message.c_str());
  WLRedirect(form, target);
}

}  // namespace

void WLSalesDocumentDelete(LWebletForm& form, LSalesDocumentType type) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
  std::string key = form.GetParam("id");
  std::string error;
  if (!WLMayChangeData(form)) error = kWebViewerRefusal;
  else if (key.empty()) error = "Aucun document n'est indiqué.";
  else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (!LSalesDocumentDelete(profile, kind, key, &error) && error.empty())
      error = std::string(kind.title) + " « " + key + " » introuvable.";
  }
  BackToList(form, kind, error);
}

void WLSalesDocumentToInvoice(LWebletForm& form, LSalesDocumentType type) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
  std::string key = form.GetParam("id");
  std::string error;
  std::string invoice;
  if (!WLMayChangeData(form)) error = kWebViewerRefusal;
  else if (key.empty()) error = "Aucun document n'est indiqué.";
  else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (LSalesDocumentConvertToInvoice(profile, kind, key, false, invoice, error) || !invoice.empty()) {
      WLRedirect(form, LWebFormat("invoiceprop?id=%U", invoice.c_str()));
      return;
    }
  }
  BackToList(form, kind, error);
}

void WLQuoteToOrder(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  std::string key = form.GetParam("id");
  std::string error;
  std::string order;
  if (!WLMayChangeData(form)) error = kWebViewerRefusal;
  else if (key.empty()) error = "Aucun document n'est indiqué.";
  else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (LSalesQuoteConvertToOrder(profile, key, order, error)) {
      WLRedirect(form, LWebFormat("orderprop?id=%U", order.c_str()));
      return;
    }
  }
  BackToList(form, kind, error);
}

std::string LWebSalesDocumentDraftName(LSalesDocumentType type, std::string_view key) {
  return "draft." + std::string(LSalesDocumentKindOf(type).command) + "." + (key.empty() ? "new" : std::string(key));
}

void WLSalesDocumentItemsSave(LWebletForm& form, LSalesDocumentType type) {
  // A background call of the dialog's page: its answer is script, and nothing to run.
  if (!WLAjaxAuthenticate(form)) return;
  WLWriteScriptAnswerHeader(form);
  if (!WLMayChangeData(form)) return;
  // The dialog's own values, without the round trip's.
  LHashTable values;
  for (const auto& [name, value] : form.parameters)
    if (name != "submit" && name != "submitdef" && name != "isComAJAX" && name != "MainControlId" &&
        name != "discard")
      values.SetString(name, value);
  std::string text;
  values.SaveHTTPString(text);
  if (text.size() > kLWebDraftMaxBytes) return;  // a runaway form is not kept
  form.session.SetString(LWebSalesDocumentDraftName(type, form.GetParam("id")), text);
}

void WLPOrderToBill(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  std::string key = form.GetParam("id"), error, bill;
  if (!WLMayChangeData(form)) error = kWebViewerRefusal;
  else if (key.empty()) error = "Aucun document n'est indiqué.";
  else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (LPOrderConvertToBill(profile, key, LDate::Today().ToText(), bill, &error)) {
      WLRedirect(form, LWebFormat("billprop?id=%U", bill.c_str()));
      return;
    }
  }
  BackToList(form, kind, error);
}
