#include "accounts/webfec.h"

#include <unistd.h>

#include "accounts/fecexport.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webaccess.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/textnum.h"
#include "llib/gen/log.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kYearsOffered = 6;  // this year and the five before

constexpr const char* kAdministratorsOnly =
    "<p class=error>L'export du fichier des écritures comptables est réservé aux administrateurs.</p>";

// The page with an error above the form (the export's refusal), answered as a whole page.
class LWebFecRefusalPage : public LWebFecPage {
 public:
  LWebFecRefusalPage(LWebletForm& form, std::string message) : LWebFecPage(form), message_(std::move(message)) {}
  void Generate() override {
    form_.Write(LWebFormat("<p class=error id=errorTag>%H</p>", message_.c_str()));
    LWebFecPage::Generate();
  }

 private:
  std::string message_;
};

}  // namespace

LWebFecPage::LWebFecPage(LWebletForm& form) : LWebPageMainEx(form, "fecexport", "Fichier des écritures comptables") {}

void LWebFecPage::Generate() {
  if (!WLIsAdministator(form_)) {
    form_.Write(kAdministratorsOnly);
    return;
  }
  // The last closed fiscal year is chosen, named by the year it ended in.
  LProfile profile(WLSessionBusinessFolder(form_));
  LDate today = LDate::Today(), yearStart;
  (void)LDate::Parse(LFiscalYearOf(profile, today).from, yearStart);
  int thisYear = today.year, lastClosed = yearStart.AddDays(-1).year;
  std::string options;
  for (int year = thisYear; year > thisYear - kYearsOffered; --year)
    options += LWebFormat("<option value='%d'%s>%d</option>", year, year == lastClosed ? " selected" : "", year);
  form_.Write(LWebFormat(
      "<p>Le fichier des écritures comptables (FEC) de l'exercice clos dans l'année choisie, tel que l'administration "
      "fiscale le demande lors d'un contrôle : une ligne par écriture, à-nouveaux en tête.</p>"
      "<form method=get action='fecdownload'>"
      "<p><label for=year>Exercice clos en </label><select id=year name=year>%s</select></p>"
      "<p><input type=checkbox id=utf8 name=utf8 value=1><label for=utf8> Encodage UTF-8 (ISO-8859-15 par "
      "défaut)</label></p>"
      "<p><input type=submit name=submit value='Télécharger le FEC'></p></form>",
      options.c_str()));
}

void WLFecDownload(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  if (!WLIsAdministator(form)) {
    WLWebPageRun<LWebFecPage>(form);
    return;
  }
  LProfile profile(WLSessionBusinessFolder(form));
  LFecExportOptions options;
  options.year = LTextToInt(form.GetParam("year"));
  options.utf8 = form.GetParam("utf8") == "1";
  std::string folder = LFile::GetTempFolder() + "/kontavo-fec-XXXXXX";
  if (::mkdtemp(folder.data()) == nullptr) {
    LWebFecRefusalPage(form, "Impossible de préparer le fichier.").Open();
    return;
  }
  options.folder = folder;
  LFecExportResult result;
  std::string error, content;
  bool exported = LFecExport(profile, options, result, &error) && LFile::ReadAll(result.path, content);
  LFile::RemoveTree(folder);
  if (!exported) {
    LWebFecRefusalPage(form, error.empty() ? "Impossible de lire le fichier exporté." : error).Open();
    return;
  }
  std::string name = result.path.substr(result.path.find_last_of('/') + 1);
  LLogInfo("FEC %s exporté (%lld lignes).", name.c_str(), result.lineCount);
  form.WriteHeader(LWebFormat("HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=%s\r\n"
                              "Content-Disposition: attachment; filename=\"%s\"\r\nContent-Length: %zu\r\n"
                              "Cache-Control: no-store\r\n\r\n",
                              options.utf8 ? "UTF-8" : "ISO-8859-15", name.c_str(), content.size()));
  form.Write(content);
}
