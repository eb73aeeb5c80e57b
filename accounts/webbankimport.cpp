// The bank pages that bring a statement in: the upload, the CSV column mapping and the choice of
// the bank account; and the route table of all the bank pages.
#include <random>

#include "accounts/accounts.h"
#include "accounts/bankimport.h"
#include "accounts/statementcsv.h"
#include "accounts/webbank.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

constexpr int kAccountControl = 101;
constexpr int kFormatControl = 102;
constexpr int kFirstColumnControl = 111;  // date, text, amount, debit, credit, reference
constexpr int kDecimalControl = 121;
constexpr int kDatesControl = 122;

const char* const kColumnLabels[] = {"Date :", "Libellé :", "Montant :", "Débit :", "Crédit :", "Référence :"};

// Where an uploaded statement waits for its column mapping: beside the account's lines.
std::string PendingUploadPath(const LProfile& profile, std::string_view account) {
  std::string folder = LFile::MakeFilePath(profile.GetDataStore().GetFolder(), "BankLines");
  (void)LFile::MakeFolder(folder);
  return LFile::MakeFilePath(folder, std::string(account) + ".upload");
}

// Imports the upload waiting for account, then shows the account's reconciliation; when refused,
// dialog shows why and the upload waits for another try.
bool ImportUpload(LWebDialog& dialog, LProfile& profile, const std::string& account, LStatementFormat format,
                  std::string_view csvMap) {
  LBankImportData data;
  data.profile = &profile;
  data.request.account = account;
  data.request.path = PendingUploadPath(profile, account);
  data.request.format = format;
  data.request.csvMap = csvMap;
  LProcessInterfaceVoid process;
  if (Process(process, data) != kProcessFinished) {
    dialog.PopupBoxError(data.error);
    return false;
  }
  (void)::unlink(data.request.path.c_str());
  dialog.Redirect(WLReconTarget(account));
  dialog.SetAnswerWritten();
  return true;
}

}  // namespace

std::string WLBankAccountOf(LWebletForm& form, const LProfile& profile) {
  std::string account = form.GetParam("account");
  if (account.empty()) LOptions::GetDefAccountNumber(profile, 1, account);
  return account;
}

void WLAccountChoices(const LProfile& profile, bool assetsOnly, std::vector<std::string>& texts,
                      std::vector<std::string>& values) {
  LAccountList list(profile);
  for (const std::string& number : list.GetNumbers()) {
    LAccount account;
    if (!list.Open(account, number) || account.IsDeleted() || account.IsHeader()) continue;
    if (assetsOnly && account.GetType() != kAccountAsset) continue;
    texts.push_back(number + " " + account.GetDescription());
    values.push_back(number);
  }
}

std::string WLReconTarget(std::string_view account) { return LWebFormat("recon?account=%U", std::string(account).c_str()); }

// ---- "loadbankstatement" ------------------------------------------------------------------------

LWebLoadBankStatementDialog::LWebLoadBankStatementDialog(LWebletForm& form)
    : LWebDialogEx(form, "loadbankstatement") {
  SetTitle("Importer un relevé bancaire");
  SetUpload(true);
  SetOkText("Importer");
  AddNavLink("main", "Page principale");
}

void LWebLoadBankStatementDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::vector<std::string> texts, values;
  WLAccountChoices(profile, true, texts, values);
  if (GetText(kAccountControl).empty()) SetText(kAccountControl, WLBankAccountOf(form_, profile));
  AddPullDownList(kAccountControl, "Compte bancaire :", texts, values);
  AddPullDownList(kFormatControl, "Format :",
                  {"Reconnu d'après le contenu", "OFX / QFX", "CSV", "CFONB 120", "camt.053", "QIF", "MT940"},
                  {"", "ofx", "csv", "cfonb", "camt", "qif", "mt940"});
  form_.Write("<tr><td>Relevé :</td><td><input type=file name=statement id=statement></td></tr>");
}

bool LWebLoadBankStatementDialog::CmOk() {
  if (RefuseViewer()) return false;
  const LWebletUploadedFile* file = Upload().Find("statement");
  if (file == nullptr || file->data.empty()) {
    PopupControlDataInvalid("statement", "Veuillez choisir le fichier du relevé.");
    return false;
  }
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = GetText(kAccountControl);
  LStatementFormat format = LStatementFormat::kUnknown;
  (void)LStatementFormatFromName(GetText(kFormatControl), format);
  std::string path = PendingUploadPath(profile, account);
  if (!LFile::WriteAllAtomic(path, file->data)) {
    PopupBoxError("Impossible d'enregistrer le relevé reçu.");
    return false;
  }
  if (format == LStatementFormat::kUnknown) format = LStatementGuessFormat(file->data);
  LAccount record;
  LStatementCsvMap guess;
  bool needsMapping = format == LStatementFormat::kCSV && LAccountList(profile).Open(record, account) &&
                      record.GetString(kBankCsvMapField).empty() && !LStatementCsvMapGuess(file->data, guess);
  if (needsMapping) {
    Redirect(LWebFormat("matchCSV?account=%U", account.c_str()));
    SetAnswerWritten();
    return true;
  }
  return ImportUpload(*this, profile, account, format, "");
}

// ---- "matchCSV" -----------------------------------------------------------------------------------

LWebMatchCSVDialog::LWebMatchCSVDialog(LWebletForm& form) : LWebDialogEx(form, "matchCSV") {
  SetTitle("Colonnes du relevé CSV");
  SetOkText("Importer");
  AddNavLink("main", "Page principale");
}

void LWebMatchCSVDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  std::string bytes;
  if (!LFile::ReadAll(PendingUploadPath(profile, account), bytes)) {
    AddRowError("Aucun relevé CSV n'attend ses colonnes pour ce compte : importez-le d'abord.");
    return;
  }
  AddHiddenField("account", account);
  AddStatic("Le compte " + account + " retiendra ces colonnes pour ses prochains relevés.");
  std::vector<std::string> texts = {"(aucune)"}, values = {""};
  std::vector<std::string> headings = LStatementCsvHeadings(bytes, LStatementCsvMap());
  for (std::size_t i = 0; i < headings.size(); ++i) {
    texts.push_back(std::to_string(i + 1) + " : " + headings[i]);
    values.push_back(std::to_string(i + 1));
  }
  for (int i = 0; i < 6; ++i) AddPullDownList(kFirstColumnControl + i, kColumnLabels[i], texts, values);
  AddPullDownList(kDecimalControl, "Séparateur décimal :", {"Virgule", "Point"}, {"comma", "point"});
  AddPullDownList(kDatesControl, "Dates :", {"Jour/mois/année", "Mois/jour/année"}, {"dmy", "mdy"});
}

bool LWebMatchCSVDialog::CmOk() {
  if (RefuseViewer()) return false;
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string account = WLBankAccountOf(form_, profile);
  LStatementCsvMap map;
  std::string* columns[] = {&map.date, &map.text, &map.amount, &map.debit, &map.credit, &map.ref};
  for (int i = 0; i < 6; ++i) *columns[i] = GetText(kFirstColumnControl + i);
  map.decimalMark = GetText(kDecimalControl) == "point" ? '.' : ',';
  map.dates = GetText(kDatesControl) == "mdy" ? "mdy" : "dmy";
  map.skip = 1;
  if (!map.IsComplete()) {
    PopupControlDataInvalid(kFirstColumnControl, "Choisissez au moins la date, le libellé et le montant (ou le débit et le crédit).");
    return false;
  }
  return ImportUpload(*this, profile, account, LStatementFormat::kCSV, LStatementCsvMapText(map));
}

// ---- "changeaccount" ------------------------------------------------------------------------------

LWebChangeAccountDialog::LWebChangeAccountDialog(LWebletForm& form) : LWebDialogEx(form, "changeaccount") {
  SetTitle("Compte bancaire");
  AddNavLink("main", "Page principale");
}

void LWebChangeAccountDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::vector<std::string> texts, values;
  WLAccountChoices(profile, true, texts, values);
  if (GetText(kAccountControl).empty()) SetText(kAccountControl, WLBankAccountOf(form_, profile));
  AddPullDownList(kAccountControl, "Compte à rapprocher :", texts, values);
}

bool LWebChangeAccountDialog::CmOk() {
  Redirect(WLReconTarget(GetText(kAccountControl)));
  SetAnswerWritten();
  return true;
}

// ---- Routes -----------------------------------------------------------------------------------------

void LAccountsInstallBankPages() {
  static const LWebletRoute kRoutes[] = {
      {"loadbankstatement", WLWebDialogRun<LWebLoadBankStatementDialog>},
      {"matchCSV", WLWebDialogRun<LWebMatchCSVDialog>},
      {"changeaccount", WLWebDialogRun<LWebChangeAccountDialog>},
      {"recon", WLWebDialogRun<LWebReconcileDialog>},
      {"recordTxn", WLWebDialogRun<LWebRecordTxnDialog>},
      {"recordTxnFromBST", WLWebDialogRun<LWebRecordTxnFromBSTDialog>},
      {"reconrollback", WLReconRollback},
      {"generatereconcilereport", WLWebPageRun<LWebReconcileReportPage>},
  };
  LWebletInstallScripts(kRoutes);
  LWebletInstallPostScript("loadbankstatement", WLWebUploadDialogRun<LWebLoadBankStatementDialog>);
}
