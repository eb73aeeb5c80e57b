#include "invoice/sales/webimportcsv.h"

#include <unistd.h>

#include "invoice/shared/csvimport.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/randomtext.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kKindControl = 101;
constexpr int kFirstColumnControl = 1001;  // the field list of column n is 1000 + n
constexpr int kMaxColumns = 99;
constexpr std::size_t kMaxCsvUploadBytes = 64u * 1024 * 1024;
constexpr std::string_view kFileField = "csvfile";
constexpr std::string_view kUploadButton = "Envoyer";
constexpr std::string_view kPreviewButton = "Actualiser l'aperçu";
constexpr std::string_view kImportButton = "Importer";
constexpr LPartyKind kKinds[] = {LPartyKind::kCustomer, LPartyKind::kItem, LPartyKind::kSupplier};
constexpr const char* kKindLabels[] = {"Clients", "Articles", "Fournisseurs"};

// The pending file of id, or "" when id is not one the page made (32 hexadecimal digits).
std::string PendingPath(std::string_view id) {
  if (id.size() != 32 || id.find_first_not_of("0123456789abcdef") != std::string_view::npos) return {};
  return LFile::GetUserDataFolderAppSubFolder("Import") + "/" + std::string(id) + ".csv";
}

LPartyKind RequestedKind(const LWebletForm& form) {
  LPartyKind kind = LPartyKind::kCustomer;
  (void)LPartyKindFromWord(form.GetParam("kind"), kind);
  return kind;
}

std::string SeparatorName(char separator) {
  return separator == ';' ? "point-virgule" : separator == '\t' ? "tabulation" : "virgule";
}

// The report of a run as HTML: what was read, the counts, the refused rows.
std::string ReportHtml(const LCsvImportReport& report, bool dryRun) {
  std::string html = LWebFormat("<p class=importsummary>%d lignes lues (%s, séparateur %s) : %d %s, %d %s, %d refusées.</p>",
                                report.nRows, std::string(LCsvEncodingName(report.encoding)).c_str(),
                                SeparatorName(report.separator).c_str(), report.nCreated,
                                dryRun ? "à créer" : "créées", report.nUpdated, dryRun ? "à mettre à jour" : "mises à jour",
                                report.errors.GetErrorCount());
  if (!report.errors.GetLines().empty()) {
    html += "<ul class=importerrors>";
    for (const std::string& line : report.errors.GetLines()) html += LWebFormat("<li>%H</li>", line.c_str());
    html += "</ul>";
  }
  return html;
}

// The dialog's own address: with the pending file's id and the kind once the file is there, so
// that an upload POST, whose fields are read only after the dialog is made, still knows them.
std::string DialogRoute(const LWebletForm& form) {
  std::string id = form.GetParam("file");
  if (PendingPath(id).empty()) return "importcsv";
  return LWebFormat("importcsv?file=%U&kind=%U", id.c_str(), std::string(LPartyKindOf(RequestedKind(form)).word).c_str());
}

}  // namespace

LWebImportCsvDialog::LWebImportCsvDialog(LWebletForm& form) : LWebDialogEx(form, DialogRoute(form)) {
  SetTitle("Importer un fichier CSV");
  AddNavLink("main", "Page principale");
  AddNavLink("help/importcsv.html", "Aide");
  SetUpload(true);
  SetUploadLimit(kMaxCsvUploadBytes);
  if (PendingPath(form.GetParam("file")).empty()) {
    SetOkText(kUploadButton);
  } else {
    SetOkText(kImportButton);
    AddSpecialSubmit(kPreviewButton, "");
  }
  SetCancelPage("main");
}

void LWebImportCsvDialog::Generate() {
  std::string bytes;
  std::string path = PendingPath(form_.GetParam("file"));
  if (path.empty()) {
    GenerateUpload();
    return;
  }
  if (!LFile::ReadAll(path, bytes)) {
    AddRowError("Ce fichier n'est plus disponible : veuillez l'envoyer à nouveau.");
    return;
  }
  GenerateMapping(bytes);
}

void LWebImportCsvDialog::GenerateUpload() {
  std::vector<std::string> labels(std::begin(kKindLabels), std::end(kKindLabels)), words;
  for (LPartyKind kind : kKinds) words.emplace_back(LPartyKindOf(kind).word);
  if (GetText(kKindControl).empty()) SetText(kKindControl, form_.GetParam("kind", "customers"));
  AddPullDownList(kKindControl, "Importer :", labels, words);
  form_.Write(LWebFormat("<tr><td><label for=%s>Fichier CSV :</label></td><td><input type=file id=%s name=%s "
                         "accept='.csv,.txt,text/csv'></td></tr>",
                         std::string(kFileField).c_str(), std::string(kFileField).c_str(), std::string(kFileField).c_str()));
  AddStaticSmall("UTF-8, UTF-16 ou Windows-1252 ; séparateur virgule, point-virgule ou tabulation ; la première ligne "
                 "nomme les colonnes (en français ou en anglais).");
}

void LWebImportCsvDialog::GenerateMapping(const std::string& bytes) {
  LPartyKind kind = RequestedKind(form_);
  AddHiddenField("file", form_.GetParam("file"));
  AddHiddenField("kind", LPartyKindOf(kind).word);
  LCsvTable table;
  std::string error;
  if (!LCsvTableParse(bytes, table, &error) || table.header.cells.empty()) {
    AddRowError(error.empty() ? std::string("Le fichier ne contient aucune ligne.") : error);
    return;
  }
  const std::vector<std::string>& header = table.header.cells;
  int nColumns = std::min(static_cast<int>(header.size()), kMaxColumns);
  // Each column's list: recognised from its header, the key, one of the fields, or left out.
  std::vector<std::string> texts = {"(d'après l'en-tête)", "Code (clé)", "— ignorée —"};
  std::vector<std::string> values = {"", std::string(kKeyColumn), "-"};
  for (const LPartyField& field : LPartyFields(kind))
    if (!LPartyFieldIsComputed(kind, field.name)) {
      texts.emplace_back(field.name);
      values.emplace_back(field.name);
    }
  StartGroupBox("Colonnes");
  for (int n = 1; n <= nColumns; ++n)
    AddPullDownList(kFirstColumnControl + n - 1, LWebFormat("%d. %s :", n, header[n - 1].c_str()), texts, values);
  EndGroupBox();

  LProfile profile(WLSessionBusinessFolder(form_));
  LCsvImportReport report;
  StartGroupBox("Aperçu");
  if (!LCsvImportBytes(profile, kind, bytes, ChosenMap(nColumns), true, nullptr, report, &error)) {
    AddRowError(error);
  } else {
    std::string notes = "<ul class=importmapping>";
    for (const std::string& note : report.mapping) notes += LWebFormat("<li>%H</li>", note.c_str());
    form_.Write("<tr><td colspan=2>" + notes + "</ul>" + ReportHtml(report, true) + "</td></tr>");
  }
  EndGroupBox();
}

std::string LWebImportCsvDialog::ChosenMap(int nColumns) const {
  std::string map;
  for (int n = 1; n <= nColumns; ++n) {
    std::string field = GetText(kFirstColumnControl + n - 1);
    if (field.empty()) continue;
    if (!map.empty()) map += ',';
    map += std::to_string(n) + "=" + field;
  }
  return map;
}

bool LWebImportCsvDialog::CmOk() {
  if (RefuseViewer()) return false;
  std::string path = PendingPath(form_.GetParam("file"));
  if (path.empty()) return Upload();
  std::string bytes, error;
  if (!LFile::ReadAll(path, bytes)) {
    PopupBoxError("Ce fichier n'est plus disponible : veuillez l'envoyer à nouveau.");
    return false;
  }
  LPartyKind kind = RequestedKind(form_);
  std::string map = ChosenMap(kMaxColumns);
  std::string here = LWebFormat("importcsv?file=%U&kind=%U", form_.GetParam("file").c_str(),
                                std::string(LPartyKindOf(kind).word).c_str());
  // The lists travel in the address so that the preview shows the chosen columns.
  for (int n = 1; n <= kMaxColumns; ++n)
    if (std::string field = GetText(kFirstColumnControl + n - 1); !field.empty())
      here += LWebFormat("&%d=%U", kFirstColumnControl + n - 1, field.c_str());
  if (form_.GetParam("submit") == kPreviewButton) {
    Redirect(here);
    SetAnswerWritten();
    return true;
  }
  LProfile profile(WLSessionBusinessFolder(form_));
  LCsvImportReport report;
  if (!LCsvImportBytes(profile, kind, bytes, map, false, nullptr, report, &error)) {
    PopupBoxError(error);
    return false;
  }
  (void)::unlink(path.c_str());
  // What was done replaces the page's form.
  WriteAnswerScript(LWebFormat("document.getElementById('dialogform').innerHTML = '%s';\n",
                               LJScriptEscape("<h2>Importation terminée</h2>" + ReportHtml(report, false) +
                                              "<p><a href='importcsv'>Importer un autre fichier</a> · <a href='main'>"
                                              "Page principale</a></p>")
                                   .c_str()));
  SetAnswerWritten();
  return true;
}

bool LWebImportCsvDialog::Upload() {
  const LWebletUploadedFile* file = LWebDialog::Upload().Find(kFileField);
  if (file == nullptr || file->data.empty()) {
    PopupControlDataInvalid(std::string(kFileField), "Veuillez choisir le fichier CSV à importer.");
    return false;
  }
  std::string id = LRandomHexText(16);
  if (!LFile::WriteAllAtomic(PendingPath(id), file->data)) {
    PopupBoxError("Impossible d'enregistrer le fichier reçu.");
    return false;
  }
  Redirect(LWebFormat("importcsv?file=%U&kind=%U", id.c_str(), GetText(kKindControl).c_str()));
  SetAnswerWritten();
  return true;
}
