#include "invoice/sales/documentsend.h"

#include <cstdlib>

#include "invoice/sales/documentprint.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/company.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/options.h"
#include "invoice/shared/printformat.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/optionalerror.h"
#include "llib/net/email.h"
#include "llib/net/emailsendbg.h"
#include "llib/net/emailaddress.h"
#include "llib/net/emailsettings.h"

namespace {

constexpr std::string_view kDefaultSubject = "[entreprise] : [document] [numéro]";
constexpr std::string_view kDefaultBody =
    "Bonjour,\n\nVeuillez trouver ci-joint [le document] [numéro] d'un montant de [montant].\n\n"
    "Nous restons à votre disposition pour toute question.\n\nCordialement,\n[entreprise]";

// The article and name of a kind in a sentence: "notre facture", "notre devis", ...
std::string_view KindInSentence(LSalesDocumentType type) {
  switch (type) {
    case LSalesDocumentType::kInvoice: return "notre facture";
    case LSalesDocumentType::kQuote: return "notre devis";
    case LSalesDocumentType::kOrder: return "notre confirmation de commande";
    case LSalesDocumentType::kCreditNote: return "notre avoir";
    case LSalesDocumentType::kPOrder: return "notre bon de commande";
  }
  return "notre document";
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

bool CanCarryFacturX(const LSalesDocumentKind& kind) {
  return kind.type == LSalesDocumentType::kInvoice || kind.type == LSalesDocumentType::kCreditNote;
}

// Passes everything on to the caller's interface and keeps the error text for the history.
class ErrorKeeper : public LProcessInterface {
 public:
  explicit ErrorKeeper(LProcessInterface& inner) : inner_(inner) {}
  bool IsToStop() override { return inner_.IsToStop(); }
  bool ProcessWait(unsigned int ms) override { return inner_.ProcessWait(ms); }
  void SetError(std::string_view text) override {
    error_.assign(text);
    inner_.SetError(text);
  }
  void SetStatus(std::string_view text, int line) override { inner_.SetStatus(text, line); }
  void SetProgress(double fraction) override { inner_.SetProgress(fraction); }
  void SetProgressIndeterminateOn() override { inner_.SetProgressIndeterminateOn(); }
  void SetProgressIndeterminateOff() override { inner_.SetProgressIndeterminateOff(); }
  void SetResultCode(LProcessResult result, const void* data, unsigned long size) override {
    inner_.SetResultCode(result, data, size);
  }
  bool ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) override {
    return inner_.ProcessWaitSignal(signal, ms);
  }
  int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) override {
    return inner_.ProcessWaitSignalObjectGroup(group, ms);
  }
  const std::string& Error() const { return error_; }

 private:
  LProcessInterface& inner_;
  std::string error_;
};

LProcessResult Fail(LProcessInterface& process, std::string_view message) {
  process.SetError(message);
  return kProcessFailed;
}

}  // namespace

LDocumentMail LDocumentMailDefaults(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document) {
  LRecord party;
  std::string_view partyList = kind.type == LSalesDocumentType::kPOrder ? "Suppliers" : "Customers";
  (void)profile.MainList(partyList).Open(party, document.GetCustomer());  // absent: no address, key as name
  LCompany company;
  company.OpenFrom(profile);
  LRecord kindOptions;
  (void)profile.List(kMiscList).Open(kindOptions, kind.optionsRecord);  // absent: the defaults
  LOptions options;
  options.OpenFrom(profile);

  LDocumentMail mail;
  mail.to = party.GetString("Email");
  mail.subject = kindOptions.GetString("EmailSubject", kDefaultSubject);
  kindOptions.GetString("EmailText", kDefaultBody, mail.body);
  std::string partyName = party.GetString("Name");
  if (partyName.empty()) partyName = document.GetCustomer();
  for (std::string* text : {&mail.subject, &mail.body}) {
    ReplaceAll(*text, "[document]", kind.title);
    ReplaceAll(*text, "[le document]", KindInSentence(kind.type));
    ReplaceAll(*text, "[numéro]", document.GetPrimaryKey());
    ReplaceAll(*text, "[montant]", LPrintFormat(profile).Money(document.GetTotal()));
    ReplaceAll(*text, "[client]", partyName);
    ReplaceAll(*text, "[entreprise]", company.GetName());
  }
  mail.facturX = CanCarryFacturX(kind) && options.GetString("CountryCode") == "FR";
  return mail;
}

namespace {

// A document's mail ready to leave: its texts and recipients, the PDF in a folder of its own
// (the mail shows the file's name), and the list the document's history is kept under.
struct PreparedMail {
  LDocumentMail mail;
  std::string list;
  std::string folder;
  std::string attachment;
};

// Prepares the mail of the document key of kind. false with message set (and, when the document
// exists, its history saying "failed" with it): no recipient, an invalid address, the PDF not
// made.
bool PrepareMail(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key, const LDocumentMail& request,
                 std::optional<bool> facturX, std::string_view user, PreparedMail& prepared, std::string& message) {
  LSalesDocument document;
  if (!LSalesDocumentOpen(profile, kind, key, document)) {
    message = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  prepared.list = document.IsDraft() ? kind.draftsList : kind.recordedList;
  LDocumentMail& mail = prepared.mail;
  mail = LDocumentMailDefaults(profile, kind, document);
  if (!request.to.empty()) mail.to = request.to;
  if (!request.subject.empty()) mail.subject = request.subject;
  if (!request.body.empty()) mail.body = request.body;
  if (facturX) mail.facturX = *facturX;
  auto failed = [&](std::string text) {
    (void)LDocumentHistoryEmail(profile, prepared.list, key, "failed", user, mail.to, text);  // a trace only
    message = std::move(text);
    return false;
  };
  if (mail.to.empty())
    return failed("Aucune adresse de courriel pour « " + document.GetCustomer() +
                  " » : indiquez-la dans sa fiche ou donnez les destinataires.");
  if (!LEmail::ValidateAddress(mail.to)) return failed("Adresse de courriel non valide : " + mail.to);
  if (mail.facturX && !CanCarryFacturX(kind)) return failed("Seules les factures et les avoirs sont en Factur-X.");

  LPrintedForm form;
  std::string error;
  std::optional<LFacturXProfile> profileX;
  if (mail.facturX) profileX = LFacturXProfile::kEn16931;
  if (!LMakeSalesDocumentPdf(profile, kind, document, profileX, {}, form, &error)) return failed(error);
  prepared.folder = LFile::GetTempFolder() + "/kontavo-courriel-XXXXXX";
  if (::mkdtemp(prepared.folder.data()) == nullptr) return failed("Impossible de préparer la pièce jointe.");
  prepared.attachment = prepared.folder + "/" + form.fileName;
  if (!LWritePrintedForm(form, prepared.attachment, &error)) {
    LFile::RemoveTree(prepared.folder);
    return failed(error);
  }
  return true;
}

}  // namespace

LProcessResult LSendSalesDocument(LProcessInterface& process, LProfile& profile, const LSalesDocumentKind& kind,
                                  std::string_view key, const LDocumentMail& request, std::optional<bool> facturX,
                                  std::string_view user) {
  PreparedMail prepared;
  std::string message;
  if (!PrepareMail(profile, kind, key, request, facturX, user, prepared, message)) return Fail(process, message);
  EmailSMTPSendProcess send;
  LEmailSettingsFillRequest(LEmailSettingsLoad(), send);
  send.recipients = prepared.mail.to;
  send.subject = prepared.mail.subject;
  send.text = prepared.mail.body;
  send.attachments = {prepared.attachment};
  ErrorKeeper keeper(process);
  LProcessResult result = Process(keeper, send);
  LFile::RemoveTree(prepared.folder);
  // The history is a trace: the mail left (or not) whether or not it can be written.
  const LDocumentMail& mail = prepared.mail;
  if (result == kProcessFinished) (void)LDocumentHistoryEmail(profile, prepared.list, key, "sent", user, mail.to);
  else if (result == kProcessFailed)
    (void)LDocumentHistoryEmail(profile, prepared.list, key, "failed", user, mail.to, keeper.Error());
  return result;
}

bool LQueueSalesDocumentMail(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                             const LDocumentMail& request, std::optional<bool> facturX, std::string_view user,
                             std::string* message) {
  PreparedMail prepared;
  std::string problem;
  if (!PrepareMail(profile, kind, key, request, facturX, user, prepared, problem)) return LFail(message, problem);
  (void)LDocumentHistoryEmail(profile, prepared.list, key, "pending", user, prepared.mail.to);  // a trace only
  // The sender's thread hears of each attempt: the history follows it, in a profile of its own.
  LEmailSendReport report = [business = profile.GetDatabaseName(), list = prepared.list, key = std::string(key),
                             user = std::string(user), to = prepared.mail.to,
                             folder = prepared.folder](LProcessResult result, const std::string& error, bool willRetry) {
    LProfile books(business);
    (void)LDocumentHistoryEmail(books, list, key, result == kProcessFinished ? "sent" : "failed", user, to, error);
    if (!willRetry) LFile::RemoveTree(folder);
  };
  LSendEmailBackground(prepared.mail.to, "", prepared.mail.subject, prepared.mail.body, {prepared.attachment}, false,
                       std::move(report));
  return true;
}
