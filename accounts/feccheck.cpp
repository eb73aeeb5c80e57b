#include "accounts/feccheck.h"

#include <algorithm>
#include <map>
#include <utility>

#include "accounts/fec.h"
#include "llib/gen/file.h"

namespace {

constexpr LFecField kMandatory[] = {kFecJournalCode, kFecJournalLib,  kFecEcritureNum, kFecEcritureDate,
                                    kFecCompteNum,   kFecCompteLib,   kFecPieceRef,    kFecPieceDate,
                                    kFecEcritureLib, kFecDebit,       kFecCredit,      kFecValidDate};
constexpr LFecField kDates[] = {kFecEcritureDate, kFecPieceDate, kFecDateLet, kFecValidDate};
constexpr LFecField kAmounts[] = {kFecDebit, kFecCredit, kFecMontantdevise};

std::vector<std::string_view> Split(std::string_view line, char separator) {
  std::vector<std::string_view> fields;
  std::size_t from = 0;
  for (std::size_t at = line.find(separator); at != std::string_view::npos; at = line.find(separator, from)) {
    fields.push_back(line.substr(from, at - from));
    from = at + 1;
  }
  fields.push_back(line.substr(from));
  return fields;
}

std::string FieldName(LFecField field) { return std::string(kFecFieldNames[field]); }

// The excerpt of outside text shown in a fault: bytes that are not printable ASCII as "?", cut.
std::string Excerpt(std::string_view text) {
  std::string excerpt;
  for (char c : text.substr(0, 40)) excerpt += c >= 0x20 && c < 0x7F ? c : '?';
  return excerpt;
}

class LFecChecker {
 public:
  LFecChecker(LFecCheckReport& report, int digits) : report_(report), digits_(digits) {}

  void CheckName(std::string_view name) {
    LDate closing;
    bool valid = name.size() == 24 && LFecIsSiren(name.substr(0, 9)) && name.substr(9, 3) == "FEC" &&
                 LFecParseDate(name.substr(12, 8), closing) && name.substr(20) == ".txt";
    if (!valid)
      Fault("Nom de fichier « " + Excerpt(name) + " » invalide : attendu SIRENFECAAAAMMJJ.txt (SIREN à 9 chiffres, "
            "date de clôture de l'exercice).");
  }

  // false when no line can be read further (no separator).
  bool CheckHeader(std::string_view header) {
    if (header.find('|') != std::string_view::npos) separator_ = '|';
    else if (header.find('\t') != std::string_view::npos) separator_ = '\t';
    else {
      Fault("Ligne 1 : séparateur introuvable, ni tabulation ni « | » dans la ligne d'en-tête.");
      return false;
    }
    std::vector<std::string_view> names = Split(header, separator_);
    if (names.size() != kFecFieldCount)
      Fault("Ligne 1 : l'en-tête compte " + std::to_string(names.size()) + " champs au lieu de 18.");
    for (std::size_t i = 0; i < names.size() && i < kFecFieldCount; ++i)
      if (names[i] != kFecFieldNames[i])
        Fault("Ligne 1 : le champ " + std::to_string(i + 1) + " de l'en-tête est « " + Excerpt(names[i]) +
              " » au lieu de « " + std::string(kFecFieldNames[i]) + " ».");
    return true;
  }

  void CheckLine(long long number, std::string_view line) {
    ++report_.lineCount;
    std::string where = "Ligne " + std::to_string(number) + " : ";
    char other = separator_ == '|' ? '\t' : '|';
    std::vector<std::string_view> fields = Split(line, separator_);
    if (fields.size() != kFecFieldCount) {
      if (fields.size() == 1 && line.find(other) != std::string_view::npos)
        Fault(where + "séparateur différent de celui de l'en-tête.");
      else
        Fault(where + std::to_string(fields.size()) + " champs au lieu de 18.");
      return;
    }
    for (LFecField field : kMandatory)
      if (fields[field].empty()) Fault(where + "le champ obligatoire " + FieldName(field) + " est vide.");
    if (!fields[kFecCompAuxNum].empty() && fields[kFecCompAuxLib].empty())
      Fault(where + "CompAuxLib est vide alors que CompAuxNum est renseigné.");
    if (!fields[kFecEcritureLet].empty() && fields[kFecDateLet].empty())
      Fault(where + "DateLet est vide alors que EcritureLet est renseigné.");
    for (LFecField field : kDates) {
      LDate date;
      if (!fields[field].empty() && !LFecParseDate(fields[field], date))
        Fault(where + FieldName(field) + " « " + Excerpt(fields[field]) + " » n'est pas une date AAAAMMJJ.");
    }
    long long amounts[std::size(kAmounts)] = {};
    bool readable = true;
    for (std::size_t i = 0; i < std::size(kAmounts); ++i) {
      std::string_view text = fields[kAmounts[i]];
      if (text.empty()) continue;
      if (!LFecParseAmount(text, digits_, amounts[i])) {
        Fault(where + FieldName(kAmounts[i]) + " « " + Excerpt(text) + " » n'est pas un montant.");
        if (i < 2) readable = false;
      }
    }
    long long debit = amounts[0], credit = amounts[1];
    if (debit != 0 && credit != 0) Fault(where + "Debit et Credit sont renseignés tous les deux.");
    if (!readable) return;
    report_.debitTotal += debit;
    report_.creditTotal += credit;
    auto key = std::make_pair(std::string(fields[kFecJournalCode]), std::string(fields[kFecEcritureNum]));
    auto [entry, added] = entries_.try_emplace(std::move(key), Entry{number, 0});
    entry->second.balance += debit - credit;
  }

  void Finish() {
    report_.entryCount = static_cast<long long>(entries_.size());
    std::vector<std::pair<long long, std::string>> unbalanced;
    for (const auto& [key, entry] : entries_)
      if (entry.balance != 0)
        unbalanced.emplace_back(entry.firstLine, "Écriture " + Excerpt(key.second) + " du journal " +
                                                     Excerpt(key.first) + " (ligne " +
                                                     std::to_string(entry.firstLine) + ") déséquilibrée : écart de " +
                                                     LFecAmountText(entry.balance, digits_) + ".");
    std::sort(unbalanced.begin(), unbalanced.end());
    for (auto& [line, fault] : unbalanced) Fault(std::move(fault));
    if (report_.debitTotal != report_.creditTotal)
      Fault("Fichier déséquilibré : total des débits " + LFecAmountText(report_.debitTotal, digits_) +
            ", total des crédits " + LFecAmountText(report_.creditTotal, digits_) + ".");
  }

 private:
  struct Entry {
    long long firstLine;  // where the entry begins, to name it
    long long balance;    // debits - credits
  };
  void Fault(std::string text) { report_.faults.push_back(std::move(text)); }

  LFecCheckReport& report_;
  int digits_;
  char separator_ = '|';
  std::map<std::pair<std::string, std::string>, Entry> entries_;
};

}  // namespace

LFecCheckReport LFecCheckText(std::string_view fileName, std::string_view content, int digits) {
  LFecCheckReport report;
  LFecChecker checker(report, digits);
  checker.CheckName(fileName);
  long long number = 0;
  bool headerRead = false;
  std::size_t from = 0;
  while (from < content.size()) {
    std::size_t end = content.find('\n', from);
    if (end == std::string_view::npos) end = content.size();
    std::string_view line = content.substr(from, end - from);
    from = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++number;
    if (!headerRead) {
      headerRead = true;
      if (!checker.CheckHeader(line)) return report;
      continue;
    }
    if (line.empty()) continue;  // a blank line carries nothing
    checker.CheckLine(number, line);
  }
  if (!headerRead) {
    report.faults.push_back("Fichier vide : la ligne d'en-tête manque.");
    return report;
  }
  checker.Finish();
  return report;
}

LFecCheckReport LFecCheckFile(const std::string& path, int digits) {
  std::string content;
  if (!LFile::ReadAll(path, content)) {
    LFecCheckReport report;
    report.faults.push_back("Impossible de lire le fichier " + path + ".");
    return report;
  }
  std::size_t slash = path.find_last_of('/');
  return LFecCheckText(slash == std::string::npos ? path : path.substr(slash + 1), content, digits);
}
