#include "invoice/sales/webpayments.h"

#include <algorithm>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/question.h"
#include "accounts/transactiondate.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/sortedinvoice.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
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
constexpr int kAmountControl = 103;
constexpr int kAccountControl = 104;
constexpr int kRefundControl = 105;
constexpr int kConfirmDateControl = 106;
constexpr int kSpreadControl = 301;   // spread over the unpaid invoices
constexpr int kChosenControl = 302;   // the amounts of the table
constexpr int kInvoicesControl = 110;  // the table's block, refreshed by AJAX
// The rows of "invoiceapplypayment" name a payment or a credit note, whose keys may be alike.
constexpr char kPaymentRef[] = "payment:";
constexpr char kCreditNoteRef[] = "creditnote:";

const LSalesDocumentKind& InvoiceKind() { return LSalesDocumentKindOf(LSalesDocumentType::kInvoice); }

const LFileStoreListBase& InvoiceList(LProfile& profile) { return profile.MainList(InvoiceKind().recordedList); }
const LFileStoreListBase& CreditNotes(LProfile& profile) {
  return profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList);
}

// The accounts a payment may be deposited into: the cash and bank accounts of the chart, by
// description; the default deposit first.
std::vector<std::string> DepositAccounts(const LProfile& profile) {
  std::vector<std::string> descriptions = {std::string(kDefaultPaymentAccount)};
  LAccountList accounts(profile);
  for (const std::string& number : accounts.GetNumbers()) {
    LAccount account;
    if (!accounts.Open(account, number)) continue;
    std::string description = account.GetDescription();
    if (account.IsCash() && !account.IsDeleted() && !account.IsHeader() &&
        std::find(descriptions.begin(), descriptions.end(), description) == descriptions.end())
      descriptions.push_back(description);
    account.DetachWithoutSave();
  }
  return descriptions;
}

std::string DateOfTime(time_t time) { return time == 0 ? std::string() : LDate::FromTime(time).ToText(); }

// Back to the payments list, with message above it when there is one.
void BackToList(LWebletForm& form, const std::string& message) {
  WLRedirect(form, message.empty() ? std::string("paymentlist") : LWebFormat("paymentlist?msg=%U", message.c_str()));
}

}  // namespace

// ---- "paymentlist" --------------------------------------------------------------------------------

LWebPaymentsPage::LWebPaymentsPage(LWebletForm& form) : LWebPageMainEx(form, "paymentlist", "Paiements") {}

void LWebPaymentsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  UseListScript();
  LWebWritePeriodListPage(form_, profile, PeriodList(),
                          WLMayChangeData(form_) ? "<a href='paymentprop' class=actionlink>Nouveau paiement</a>" : "",
                          [this](LWebletForm& out) { WriteListBlock(out); });
}

void LWebPaymentsPage::WriteListBlock(LWebletForm& out) {
  LProfile profile(WLSessionBusinessFolder(form_));
  LWebListFilter filter = LWebReadListFilter(form_, profile, PeriodList());
  const bool mayChange = WLMayChangeData(form_);
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  LHtmlList list(form_, 0, false);
  list.AddColumn("Numéro", 12, kListAlignLeft, true);
  list.AddColumn("Date", 12, kListAlignLeft, true);
  list.AddColumn("Client", 28, kListAlignLeft, true);
  list.AddColumn("Type", 12, kListAlignLeft, true);
  list.AddColumn("Montant", 14, kListAlignRight, true);
  list.AddColumn("Non imputé", 14, kListAlignRight, true);
  list.AddColumn("", 8, kListAlignCenter, false);
  long long received = 0;
  const LFileStoreListBase& payments = profile.MainList(kPaymentsList);
  auto inPeriod = [&filter](std::string_view date) { return filter.Holds(date); };
  for (const std::string& dated : LDocumentKeysDated(profile, kPaymentsList, inPeriod)) {
    LPayment payment;
    if (!payments.Open(payment, dated)) continue;  // deleted meanwhile
    std::string date = payment.GetDate().substr(0, 10);
    if (!filter.Holds(date) || (!filter.party.empty() && payment.GetCustomer() != filter.party)) continue;
    const std::string& key = payment.GetPrimaryKey();
    long long amount = payment.GetAmount();
    long long unapplied = payment.GetUnappliedAmount(profile);
    received += payment.IsRefund() ? -amount : amount;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCell(LHtmlListRow::RecordKeyOrderKey(key),
                 LWebFormat("<a href='paymentprop?id=%U'>%H</a>", key.c_str(), key.c_str()));
    row->AddCellText(date);
    row->AddCellText(payment.GetCustomer());
    row->AddCellText(payment.IsRefund() ? "Remboursement" : "Paiement");
    row->AddCell(LHtmlListRow::Int64OrderKey(amount), LHtmlEscape(LFormatMoney(amount, money)));
    row->AddCell(LHtmlListRow::Int64OrderKey(unapplied),
                 unapplied > 0 && mayChange
                     ? LWebFormat("<a href='applypayment?id=%U' title='Imputer le reste'>%H</a>", key.c_str(),
                                  LFormatMoney(unapplied, money).c_str())
                     : LHtmlEscape(LFormatMoney(unapplied, money)));
    if (mayChange)
      row->AddCell("", LWebFormat("<a href='paymentdelete?id=%U' class=deletelink onclick=\"return "
                                  "confirm('%s')\">Supprimer</a>",
                                  key.c_str(), LHtmlEscape(LJScriptEscape("Paiement " + key + " : supprimer ?")).c_str()));
    else
      row->AddCell("", "");
    list.AddRow(std::move(row));
  }
  std::size_t count = list.GetRowCount();
  std::string summary = count == 0 ? std::string("Aucun paiement sur la période.")
                                   : std::to_string(count) + " paiement(s), reçu " + LFormatMoney(received, money);
  LWebWritePagedRows(out, list, PeriodList(), filter, summary);
}

// ---- The dialogs' common parts ----------------------------------------------------------------------

LWebPaymentDialogBase::LWebPaymentDialogBase(LWebletForm& form, std::string_view routeName)
    : LWebDialogEx(form, routeName) {
  AddNavLink("help/paymentlist.html", "Aide");
  SetOkPage("paymentlist");
  SetCancelPage("paymentlist");
  if (!WLMayChangeData(form)) SetMessage(kWebViewerRefusal);
}

LWebPaymentDialogBase::~LWebPaymentDialogBase() = default;

void LWebPaymentDialogBase::PrintHeader() {
  LWebDialogEx::PrintHeader();
  WLWriteNavTabs(form_, "paymentlist");
}

LProfile& LWebPaymentDialogBase::Profile() {
  if (!profile_) profile_ = std::make_unique<LProfile>(WLSessionBusinessFolder(form_));
  return *profile_;
}

std::string LWebPaymentDialogBase::Money(long long amount) {
  return LFormatMoney(amount, Profile().GetCurrencyFormat());
}

std::string LWebPaymentDialogBase::AmountText(long long amount) {
  return LAmountInputText(amount, Profile().GetCurrencyFormat());
}

bool LWebPaymentDialogBase::ReadAmount(int control, long long& amount, bool required, bool quiet) {
  std::string text = GetTextAndTrim(control);
  amount = 0;
  if (text.empty() && !required) return true;
  const LCurrencyFormat& format = Profile().GetCurrencyFormat();
  std::string refusal;
  bool read = LReadTypedAmount(text, format, amount, &refusal);
  if (read && amount >= 0 && (amount > 0 || !required)) return true;
  if (!quiet)
    PopupControlDataInvalid(control, read || text.empty() ? std::string("Le montant doit être supérieur à zéro.") : refusal);
  return false;
}

std::string LWebPaymentDialogBase::CandidatesHtml(const std::vector<Candidate>& candidates,
                                                  const std::string& amountTitle) {
  std::string html = "<table class='hltbl paytable'><thead><tr class=hlhtr><th class=hlhtd>Pièce</th>"
                     "<th class=hlhtd>Date</th><th class=hlhtd>Échéance</th><th class=hlhtd style='text-align:right'>"
                     "Montant</th><th class=hlhtd style='text-align:right'>Reste</th><th class=hlhtd>" +
                     LHtmlEscape(amountTitle) + "</th></tr></thead><tbody>";
  if (candidates.empty())
    html += "<tr><td colspan=6 class=hltd style='text-align:center'>Aucune pièce à imputer</td></tr>";
  int line = 0;
  for (const Candidate& candidate : candidates) {
    if (line >= kMaxCandidates) break;
    int control = kFirstAmountControl + line;
    std::string value = form_.parameters.TestFieldExists(std::to_string(control))
                            ? GetText(control)
                            : (candidate.applied != 0 ? AmountText(candidate.applied) : std::string());
    html += LWebFormat(
        "<tr><td class=hltd>%H %H<input type=hidden name=applykey%d value='%H'></td><td class=hltd>%H</td>"
        "<td class=hltd>%H</td><td class=hltd align=right>%H</td><td class=hltd align=right>%H</td>"
        "<td class=hltd><input id=%d name=%d type=text size=10 inputmode=decimal value='%H' data-open='%H'></td></tr>",
        candidate.kind.c_str(), candidate.key.c_str(), line,
        (candidate.ref.empty() ? candidate.key : candidate.ref).c_str(), candidate.date.c_str(),
        candidate.due.c_str(), Money(candidate.total).c_str(), Money(candidate.open).c_str(), control, control,
        value.c_str(), AmountText(candidate.open + candidate.applied).c_str());
    ++line;
  }
  return html + LWebFormat("</tbody></table><input type=hidden name=applycount value='%d'>", line);
}

bool LWebPaymentDialogBase::ReadAmounts(std::vector<LAppliedAmount>& amounts, bool quiet) {
  int count = std::clamp(LTextToInt(form_.GetParam("applycount")), 0, kMaxCandidates);
  for (int line = 0; line < count; ++line) {
    int control = kFirstAmountControl + line;
    long long amount = 0;
    if (!ReadAmount(control, amount, false, quiet)) return false;
    std::string key = form_.GetParam("applykey" + std::to_string(line));
    if (!GetTextAndTrim(control).empty() && !key.empty()) amounts.push_back({key, amount});
  }
  return true;
}

// ---- "paymentprop", "invoicepay" --------------------------------------------------------------------

LWebPaymentDialog::LWebPaymentDialog(LWebletForm& form, std::string_view routeName)
    : LWebPaymentDialogBase(form, routeName) {
  std::string key = form.GetParam("id");
  if (!PaidInvoice().empty()) SetTitle("Paiement de la facture " + key);
  else SetTitle(key.empty() ? std::string("Nouveau paiement") : "Paiement " + key);
  SetOkText("Enregistrer");
  if (!PaidInvoice().empty()) {
    SetOkPage(LWebFormat("invoiceprop?id=%U", key.c_str()));
    SetCancelPage(LWebFormat("invoiceprop?id=%U", key.c_str()));
  }
}

std::string LWebPaymentDialog::PaidInvoice() const {
  return GetRouteName() == "invoicepay" ? form_.GetParam("id") : std::string();
}

void LWebPaymentDialog::InitDialog() {
  SetText(kDateControl, LDate::Today().ToText());
  SetText(kAccountControl, kDefaultPaymentAccount);
  SetRadioCheck(kSpreadControl);
  std::string customer = form_.GetParam("customer");
  std::string invoiceKey = PaidInvoice();
  if (!invoiceKey.empty()) {
    LSalesDocument invoice;
    if (!InvoiceList(Profile()).Open(invoice, invoiceKey)) {
      SetMessage("Facture « " + invoiceKey + " » introuvable.");
      return;
    }
    customer = invoice.GetCustomer();
    long long due = invoice.GetTotal() - invoice.GetAmountPaid(Profile());
    invoice.DetachWithoutSave();
    if (due > 0) SetText(kAmountControl, AmountText(due));
  }
  SetText(kCustomerControl, customer);
}

std::vector<LWebPaymentDialogBase::Candidate> LWebPaymentDialog::Invoices(const std::string& customer, bool refund) {
  std::vector<Candidate> candidates;
  if (customer.empty()) return candidates;
  LSortedInvoiceList sorted(Profile());
  LPayment trial;
  trial.SetString("Customer", customer);
  trial.SetBool("IsRefund", refund);
  if (refund) sorted.LoadInvoices(trial);
  else sorted.LoadUnpaidInvoices(customer);
  std::string only = PaidInvoice();
  for (const LSortedInvoice& entry : sorted.Entries()) {
    if (!only.empty() && entry.GetKey() != only) continue;
    long long open = refund ? entry.GetTotal() - entry.GetAmountRefunded() : entry.GetTotal() - entry.GetAmountPaid();
    candidates.push_back({entry.GetKey(), "Facture", DateOfTime(entry.GetDate()), DateOfTime(entry.GetDueDate()),
                          entry.GetTotal(), open, 0, ""});
  }
  return candidates;
}

void LWebPaymentDialog::Generate() {
  std::string key = form_.GetParam("id");
  AddHiddenField("id", key);
  if (!key.empty() && PaidInvoice().empty()) {
    GenerateRecorded(key);
    return;
  }
  std::string invoiceKey = PaidInvoice();
  std::string customer = GetTextAndTrim(kCustomerControl);
  if (invoiceKey.empty()) {
    std::vector<std::string> texts, values;
    LWebCustomerChoices(Profile(), texts, values);
    AddPullDownList(kCustomerControl, "Client :", texts, values);
  } else {
    AddInputReadOnly(kCustomerControl, "Client :", customer, 20);
  }
  AddDateInput(kDateControl, "Date :", "");
  AddInput(kAmountControl, "Montant :", "", 14, "inputmode=decimal");
  AddPullDownList(kAccountControl, "Déposé sur :", DepositAccounts(Profile()));
  if (invoiceKey.empty()) AddCheckBox(kRefundControl, "Remboursement au client");
  AddCheckBox(kConfirmDateControl, "Confirmer une date de plus d'un an");
  if (invoiceKey.empty()) {
    AddRadioButton(kSpreadControl, "Répartir sur les factures impayées, les plus anciennes d'abord");
    AddRadioButton(kChosenControl, "Imputer les montants indiqués ci-dessous");
  }
  form_.Write(LWebFormat("<tr><td colspan=2><div id=payinvoices data-route='%s' data-control=%d>%s</div>"
                         "<script type='text/javascript' src='payments.js'></script></td></tr>",
                         GetRouteName().c_str(), kInvoicesControl,
                         CandidatesHtml(Invoices(customer, IsChecked(kRefundControl)), "À imputer").c_str()));
}

void LWebPaymentDialog::GenerateRecorded(const std::string& key) {
  LPayment payment;
  if (!Profile().MainList(kPaymentsList).Open(payment, key)) {
    AddRowError("Paiement « " + key + " » introuvable.");
    return;
  }
  payment.UpdateInvoiceAmounts(Profile());
  auto show = [&](const std::string& label, const std::string& value) {
    StartRow();
    form_.Write(LWebFormat("<td>%H</td><td><b>%H</b></td>", label.c_str(), value.c_str()));
    EndRow();
  };
  show("Type :", payment.IsRefund() ? "Remboursement" : "Paiement");
  show("Client :", payment.GetCustomer());
  show("Date :", payment.GetDate().substr(0, 10));
  show("Montant :", Money(payment.GetAmount()));
  show("Déposé sur :", payment.GetString("DepositAccount", kDefaultPaymentAccount));
  if (payment.TestFieldExists("JournalTxnRef")) show("Référence :", payment.GetString("JournalTxnRef"));
  std::string applications;
  for (const LAppliedAmount& entry : LReadAppliedAmounts(payment))
    applications += LWebFormat("<li><a href='invoiceprop?id=%U'>Facture %H</a> : %H</li>", entry.invoice.c_str(),
                               entry.invoice.c_str(), Money(entry.amount).c_str());
  long long unapplied = payment.GetUnappliedAmount(Profile());
  payment.DetachWithoutSave();
  form_.Write("<tr><td>Imputations :</td><td>" +
              (applications.empty() ? std::string("aucune") : "<ul class=applications>" + applications + "</ul>") +
              "</td></tr>");
  show("Non imputé :", Money(unapplied));
  form_.Write(LWebFormat("<tr><td></td><td><a href='receiptsaveaspdf?id=%U' class=actionlink>Reçu (PDF)</a></td></tr>",
                         key.c_str()));
  if (WLMayChangeData(form_)) {
    std::string links;
    if (unapplied > 0)
      links += LWebFormat("<a href='applypayment?id=%U' class=actionlink>Imputer le reste</a> ", key.c_str());
    links += LWebFormat("<a href='paymentdelete?id=%U' class=deletelink onclick=\"return confirm('%s')\">"
                        "Supprimer</a>",
                        key.c_str(), LHtmlEscape(LJScriptEscape("Paiement " + key + " : supprimer ?")).c_str());
    form_.Write("<tr><td></td><td>" + links + "</td></tr>");
  }
  SetOkText("Retour");
  SetCancelText("");
}

void LWebPaymentDialog::CommandAJAX(int controlId, const std::string&) {
  if (controlId != kInvoicesControl) return;
  std::string html = CandidatesHtml(Invoices(GetTextAndTrim(kCustomerControl), IsChecked(kRefundControl)), "À imputer");
  form_.Write(LWebFormat("document.getElementById('payinvoices').innerHTML = '%s';\n", LJScriptEscape(html).c_str()));
}

bool LWebPaymentDialog::CmOk() {
  std::string key = form_.GetParam("id");
  if (!key.empty() && PaidInvoice().empty()) return true;  // a recorded payment is only shown
  if (RefuseViewer()) return false;
  LProfile& profile = Profile();
  LPaymentRequest request;
  request.customer = GetTextAndTrim(kCustomerControl);
  std::string error;
  if (!LSalesCheckParty(profile, InvoiceKind(), request.customer, &error)) {
    PopupControlDataInvalid(kCustomerControl, error);
    return false;
  }
  std::string dateText = GetTextAndTrim(kDateControl);
  LDate date;
  if (!LDate::Parse(dateText, date)) {
    PopupControlDataInvalid(kDateControl, LInvalidDateMessage(dateText));
    return false;
  }
  LFixedAsker asker(IsChecked(kConfirmDateControl));
  if (!LCheckTransactionDate(profile, asker, date, &error)) {
    PopupControlDataInvalid(kDateControl, asker.nAsked > 0 ? error + "\nCochez « Confirmer une date de plus d'un an »."
                                                           : error);
    return false;
  }
  request.date = date.ToText();
  if (!ReadAmount(kAmountControl, request.amount, true, false)) return false;
  request.depositAccount = GetTextAndTrim(kAccountControl);
  request.refund = PaidInvoice().empty() && IsChecked(kRefundControl);
  if (!ReadAmounts(request.applications, false)) return false;
  request.automatic = PaidInvoice().empty() && !GetRadioCheck(kChosenControl);
  if (request.automatic) request.applications.clear();
  if (!PaidInvoice().empty()) {
    // The invoice takes what it owes at most; the rest of the payment stays to be applied.
    LSalesDocument invoice;
    if (!InvoiceList(profile).Open(invoice, PaidInvoice())) {
      PopupBoxError("Facture « " + PaidInvoice() + " » introuvable.");
      return false;
    }
    long long due = invoice.GetTotal() - invoice.GetAmountPaid(profile);
    invoice.DetachWithoutSave();
    if (due <= 0) {
      PopupBoxError("La facture " + PaidInvoice() + " est déjà payée.");
      return false;
    }
    request.applications = {{PaidInvoice(), std::min(request.amount, due)}};
  }
  long long applied = 0;
  for (const LAppliedAmount& entry : request.applications) applied += entry.amount;
  if (applied > request.amount) {
    PopupControlDataInvalid(kAmountControl, "Le montant imputé dépasse le montant du paiement.");
    return false;
  }
  std::string newKey;
  if (!LPaymentCreate(profile, request, newKey, &error)) {
    PopupBoxError(error);
    return false;
  }
  return true;
}

// ---- "applypayment", "invoiceapplypayment" ----------------------------------------------------------

LWebApplyPaymentDialog::LWebApplyPaymentDialog(LWebletForm& form, std::string_view routeName)
    : LWebPaymentDialogBase(form, routeName) {
  std::string key = form.GetParam("id");
  SetTitle(ToInvoice() ? "Imputer à la facture " + key : "Imputer le paiement " + key);
  SetOkText("Imputer");
  if (ToInvoice()) {
    SetOkPage(LWebFormat("invoiceprop?id=%U", key.c_str()));
    SetCancelPage(LWebFormat("invoiceprop?id=%U", key.c_str()));
  }
}

bool LWebApplyPaymentDialog::ToInvoice() const { return GetRouteName() == "invoiceapplypayment"; }

std::vector<LWebPaymentDialogBase::Candidate> LWebApplyPaymentDialog::Candidates(std::string& heading) {
  std::vector<Candidate> candidates;
  LProfile& profile = Profile();
  std::string key = form_.GetParam("id");
  if (!ToInvoice()) {
    LPayment payment;
    if (!profile.MainList(kPaymentsList).Open(payment, key)) {
      heading = "Paiement « " + key + " » introuvable.";
      return candidates;
    }
    payment.UpdateInvoiceAmounts(profile);
    heading = LWebFormat("%s de %s du %s, %s, dont %s non imputé.", payment.IsRefund() ? "Remboursement" : "Paiement",
                         payment.GetCustomer().c_str(), payment.GetDate().substr(0, 10).c_str(),
                         Money(payment.GetAmount()).c_str(), Money(payment.GetUnappliedAmount(profile)).c_str());
    LSortedInvoiceList sorted(profile);
    sorted.LoadInvoices(payment);
    bool refund = payment.IsRefund();
    payment.DetachWithoutSave();
    for (const LSortedInvoice& entry : sorted.Entries()) {
      long long open = refund ? entry.GetTotal() - entry.GetAmountRefunded() : entry.GetTotal() - entry.GetAmountPaid();
      candidates.push_back({entry.GetKey(), "Facture", DateOfTime(entry.GetDate()), DateOfTime(entry.GetDueDate()),
                            entry.GetTotal(), open, entry.GetInitiallyAppliedAmount(), ""});
    }
    return candidates;
  }
  LSalesDocument invoice;
  if (!InvoiceList(profile).Open(invoice, key)) {
    heading = "Facture « " + key + " » introuvable.";
    return candidates;
  }
  std::string customer = invoice.GetCustomer();
  long long due = invoice.GetTotal() - invoice.GetAmountPaid(profile) - invoice.GetAmountRefunded(profile);
  heading = LWebFormat("Facture %s de %s, reste dû %s.", key.c_str(), customer.c_str(), Money(due).c_str());
  invoice.DetachWithoutSave();
  LPayment payment;
  for (LFileStoreIteratorBase it(profile.MainList(kPaymentsList), payment); payment.IsAttached(); it.Next(payment)) {
    if (payment.GetCustomer() != customer || payment.IsRefund()) continue;
    long long left = payment.GetUnappliedAmount(profile);
    long long applied = payment.GetAppliedAmount(key, profile);
    if (left > 0 || applied > 0)
      candidates.push_back({payment.GetPrimaryKey(), "Paiement", payment.GetDate().substr(0, 10), "", payment.GetAmount(),
                            left, applied, std::string(kPaymentRef) + payment.GetPrimaryKey()});
  }
  LSalesDocument creditNote;
  for (LFileStoreIteratorBase it(CreditNotes(profile), creditNote); creditNote.IsAttached(); it.Next(creditNote)) {
    if (creditNote.GetCustomer() != customer) continue;
    std::vector<LAppliedAmount> entries = LReadAppliedAmounts(creditNote);
    long long used = 0;
    for (const LAppliedAmount& entry : entries) used += entry.amount;
    long long applied = LAppliedAmountOf(entries, key);
    long long left = creditNote.GetTotal() - used;
    if (left > 0 || applied > 0)
      candidates.push_back({creditNote.GetPrimaryKey(), "Avoir", creditNote.GetDate().substr(0, 10), "",
                            creditNote.GetTotal(), left, applied, std::string(kCreditNoteRef) + creditNote.GetPrimaryKey()});
  }
  return candidates;
}

void LWebApplyPaymentDialog::Generate() {
  AddHiddenField("id", form_.GetParam("id"));
  std::string heading;
  std::vector<Candidate> candidates = Candidates(heading);
  AddStaticBold(heading);
  form_.Write("<tr><td colspan=2>" + CandidatesHtml(candidates, ToInvoice() ? "À prendre" : "À imputer") +
              "</td></tr>");
  AddStaticSmall("Un montant remplace ce que la pièce imputait déjà à la facture ; une case vide ne change rien.");
}

bool LWebApplyPaymentDialog::CmOk() {
  if (RefuseViewer()) return false;
  std::string key = form_.GetParam("id");
  std::vector<LAppliedAmount> amounts;
  if (!ReadAmounts(amounts, false)) return false;
  std::vector<LAppliedAmount> changes;
  for (const LAppliedAmount& entry : amounts)
    if (entry.amount > 0) changes.push_back(entry);
  std::string error;
  if (!ToInvoice()) {
    if (!LPaymentApply(Profile(), key, changes, &error)) {
      PopupBoxError(error);
      return false;
    }
    return true;
  }
  // Each payment or credit note gives the invoice the amount typed beside it.
  for (const LAppliedAmount& entry : changes) {
    std::string_view ref = entry.invoice;
    std::vector<LAppliedAmount> toInvoice = {{key, entry.amount}};
    bool done = false;
    if (ref.starts_with(kPaymentRef))
      done = LPaymentApply(Profile(), ref.substr(std::string_view(kPaymentRef).size()), toInvoice, &error);
    else if (ref.starts_with(kCreditNoteRef))
      done = LCreditNoteApply(Profile(), ref.substr(std::string_view(kCreditNoteRef).size()), toInvoice, &error);
    else
      error = "Pièce inconnue : " + entry.invoice + ".";
    if (!done) {
      PopupBoxError(error);
      return false;
    }
  }
  return true;
}

// ---- "paymentdelete" --------------------------------------------------------------------------------

void WLPaymentDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id");
  std::string error;
  if (!WLMayChangeData(form)) error = kWebViewerRefusal;
  else if (key.empty()) error = "Aucun paiement n'est indiqué.";
  else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (!LPaymentDelete(profile, key, &error) && error.empty()) error = "Paiement « " + key + " » introuvable.";
  }
  BackToList(form, error);
}
