// Journal lines and transactions in memory, and the text of their rows.
#include <algorithm>
#include <cstdio>

#include "accounts/ledger.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/moneybounds.h"

// The ledger reads back every amount up to the money ceiling and no further.
static_assert(kLedgerMaxWholeUnits * 100 + 99 == kMoneyMaxMinorUnits);

namespace {

std::string Cut(std::string_view text) { return std::string(LTruncated(text, kMaxTextBytes)); }

}  // namespace

// ---- Amounts ----------------------------------------------------------------------------------

std::string LLedgerFormatAmount(long long amount) {
  unsigned long long magnitude =
      amount < 0 ? 0ULL - static_cast<unsigned long long>(amount) : static_cast<unsigned long long>(amount);
  char text[48];
  std::snprintf(text, sizeof text, "%c%llu.%.2llu", amount < 0 ? '-' : '+', magnitude / 100, magnitude % 100);
  return text;
}

long long LLedgerReadAmountFromTheLedger(std::string_view text) {
  bool negative = false;
  bool inFraction = false;
  std::size_t nWholeDigits = 0;
  long long whole = 0;
  int cents = 0;
  int nFractionDigits = 0;
  for (char c : text) {
    if (c == '-') {
      negative = true;
    } else if (c == '.' && !inFraction) {
      inFraction = true;
    } else if (c >= '0' && c <= '9') {
      if (inFraction) {
        if (nFractionDigits < 2) {
          cents = cents * 10 + (c - '0');
          ++nFractionDigits;
        }
      } else if (nWholeDigits < kMaxTextBytes) {
        ++nWholeDigits;
        // Saturates at the cap: nothing beyond 99,999,999,999 units is ever read.
        whole = whole > kLedgerMaxWholeUnits ? whole : whole * 10 + (c - '0');
      }
    }
  }
  for (; nFractionDigits < 2; ++nFractionDigits) cents *= 10;
  long long value = std::min(whole, kLedgerMaxWholeUnits) * 100 + cents;
  return negative ? -value : value;
}

// ---- Lines ------------------------------------------------------------------------------------

std::string LLedgerJournalLine::BuildCSVRow() const {
  std::string xdataText;
  xdata.EncodeToString(xdataText);
  LCSVWriterRow row;
  row.AddCol(date);
  row.AddCol(reference);
  row.AddCol(type);
  row.AddCol(account);
  row.AddCol(reserved);
  row.AddCol(description);
  row.AddCol(LLedgerFormatAmount(amount));
  row.AddCol(xdataText);
  row.AddCol(document);
  return row.GetText() + "\r\n";
}

void LLedgerJournalLine::LoadFromCSV(const LCSVFileReader& reader) { LoadFromCSVRow(reader.GetLine()); }

void LLedgerJournalLine::LoadFromCSVRow(std::string_view rowText, std::string* amountText) {
  LCSVReaderRow row(rowText);
  LTextBuffer column;
  auto next = [&row, &column]() -> std::string {
    row.GetCol(column);
    return column;
  };
  date = next();
  reference = next();
  type = next();
  account = next();
  reserved = next();
  description = next();
  std::string amountColumn = next();
  amount = LLedgerReadAmountFromTheLedger(amountColumn);
  if (amountText != nullptr) *amountText = std::move(amountColumn);
  std::string xdataText;
  row.GetCol(xdataText);
  xdata.Clear();
  xdata.LoadHTTPString(xdataText);
  document = next();
}

// ---- Transactions -----------------------------------------------------------------------------

LLedgerTransaction::LLedgerTransaction(std::string_view date, std::string_view reference, std::string_view type)
    : date_(Cut(date)), reference_(Cut(reference)), type_(Cut(type)) {}

void LLedgerTransaction::SetDate(std::string_view date) { date_ = Cut(date); }
void LLedgerTransaction::SetReference(std::string_view reference) { reference_ = Cut(reference); }
void LLedgerTransaction::SetType(std::string_view type) { type_ = Cut(type); }

LLedgerJournalLine& LLedgerTransaction::AddLine(std::string_view account, std::string_view description,
                                                long long amount, std::string_view userName, std::string_view tax,
                                                std::string_view document) {
  LLedgerJournalLine line;
  line.date = date_;
  line.reference = reference_;
  line.type = type_;
  line.account = Cut(account);
  line.description = Cut(description);
  line.amount = amount;
  line.document = Cut(document);
  line.xdata.SetString("UserName", userName);
  line.xdata.SetString("Tax", tax);
  return AppendLine(std::move(line));
}

LLedgerJournalLine& LLedgerTransaction::AppendLine(LLedgerJournalLine line) {
  lines_.push_back(std::move(line));
  return lines_.back();
}

long long LLedgerTransaction::Sum() const {
  long long sum = 0;
  for (const auto& line : lines_) sum = LMoneySum(sum, line.amount);
  return sum;
}

bool LLedgerTransactionEqual(const LLedgerTransaction& a, const LLedgerTransaction& b) {
  if (a.GetReference() != b.GetReference() || a.GetDate() != b.GetDate() || a.GetType() != b.GetType()) return false;
  if (a.Lines().size() != b.Lines().size()) return false;
  auto same = [](const LLedgerJournalLine& x, const LLedgerJournalLine& y) {
    return x.account == y.account && x.amount == y.amount && x.date == y.date && x.reference == y.reference &&
           x.type == y.type && x.description == y.description && x.document == y.document &&
           x.reserved == y.reserved;
  };
  for (const auto& line : a.Lines()) {
    bool found = false;
    for (const auto& other : b.Lines()) {
      if (same(line, other)) {
        found = true;
        break;
      }
    }
    if (!found) return false;
  }
  return true;
}
