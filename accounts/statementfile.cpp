#include "accounts/statementfile.h"

#include "llib/gen/money.h"

namespace {

constexpr std::pair<LStatementFormat, std::string_view> kNames[] = {
    {LStatementFormat::kOFX, "ofx"},     {LStatementFormat::kCSV, "csv"}, {LStatementFormat::kCamt, "camt"},
    {LStatementFormat::kCFONB, "cfonb"}, {LStatementFormat::kQIF, "qif"}, {LStatementFormat::kMT940, "mt940"},
};

// A CFONB 120 file: records of 120 characters that begin "01" (with or without line ends).
bool LooksCFONB(std::string_view bytes) {
  if (!bytes.starts_with("01")) return false;
  std::size_t end = bytes.find_first_of("\r\n");
  if (end == std::string_view::npos) return bytes.size() % 120 == 0 && bytes.substr(120).starts_with("0");
  return end == 120 || (end > 100 && end <= 120);
}

}  // namespace

bool LStatementFormatFromName(std::string_view name, LStatementFormat& format) {
  for (const auto& [value, text] : kNames) {
    if (text == name) {
      format = value;
      return true;
    }
  }
  return false;
}

std::string_view LStatementFormatName(LStatementFormat format) {
  for (const auto& [value, text] : kNames)
    if (value == format) return text;
  return "";
}

LStatementFormat LStatementGuessFormat(std::string_view bytes) {
  std::string_view head = bytes.substr(0, 4096);
  if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
  std::string_view start = head.substr(std::min(head.find_first_not_of(" \t\r\n"), head.size()));
  if (LooksCFONB(bytes)) return LStatementFormat::kCFONB;
  if (head.find("OFXHEADER") != std::string_view::npos || head.find("<OFX>") != std::string_view::npos)
    return LStatementFormat::kOFX;
  if (head.find("camt.05") != std::string_view::npos || head.find("BkToCstmr") != std::string_view::npos)
    return LStatementFormat::kCamt;
  if (start.starts_with("!Type:") || start.starts_with("!Account") || start.starts_with("!Option"))
    return LStatementFormat::kQIF;
  if (start.starts_with("{1:") || start.starts_with(":20:") || head.find("\n:20:") != std::string_view::npos ||
      head.find("\n:60F:") != std::string_view::npos)
    return LStatementFormat::kMT940;
  // UTF-16 text (spreadsheet exports) and any text whose first line is split by a separator.
  if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF")) return LStatementFormat::kCSV;
  std::string_view firstLine = start.substr(0, start.find_first_of("\r\n"));
  if (firstLine.find_first_of(";,\t|") != std::string_view::npos) return LStatementFormat::kCSV;
  return LStatementFormat::kUnknown;
}

bool LStatementAddsUp(const LStatementAccount& statement, int currencyDigits, std::string& error) {
  if (!statement.opening || !statement.closing) return true;
  long long total = *statement.opening;
  for (const LStatementEntry& line : statement.lines) total += line.amount;
  if (total == *statement.closing) return true;
  error = "Relevé refusé : le solde d'ouverture plus les opérations donne " +
          LFormatAmountPlain(total, currencyDigits) + ", mais le relevé annonce un solde de clôture de " +
          LFormatAmountPlain(*statement.closing, currencyDigits) + ".";
  return false;
}
