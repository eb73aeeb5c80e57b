#include "accounts/bankmatch.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <unordered_map>

#include "accounts/billpayments.h"
#include "accounts/ledgeriterator.h"
#include "accounts/statementtext.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"

namespace {

// Words the banks put before the other party's name, and legal forms, which say nothing of who.
const std::set<std::string, std::less<>> kNoiseWords = {
    "vir", "sepa", "virement", "prlv", "prelevement", "cb", "carte", "chq", "cheque", "remise", "inst",
    "recu", "emis", "de", "du", "la", "le", "des", "sarl", "sas", "sasu", "eurl", "sa", "sci", "ste",
    "ref", "motif", "ech", "fac", "fact", "facture", "payment", "paiement"};

constexpr int kScoreAmount = 100;
constexpr int kScorePerDay = 3;
constexpr int kScoreChequeDivisor = 4;   // a cheque loses a point every four days
constexpr int kScoreCheque = 60;
constexpr int kScoreReference = 50;
constexpr int kScoreDocument = 40;
constexpr int kScoreName = 30;

// Lower-case ASCII of a UTF-8 letter of the Latin-1 block (the accents of French and its
// neighbours); 0 when the two bytes are not one.
char PlainLetter(unsigned char lead, unsigned char next) {
  if (lead != 0xC3) return 0;
  static constexpr char kMap[] = "aaaaaaaceeeeiiiidnooooo ouuuuyts" "aaaaaaaceeeeiiiidnooooo ouuuuyty";
  if (next < 0x80 || next > 0xBF) return 0;
  char c = kMap[next - 0x80];
  return c == ' ' ? 0 : c;
}

std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  auto flush = [&] {
    if (!word.empty() && !kNoiseWords.contains(word)) words.push_back(word);
    word.clear();
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto c = static_cast<unsigned char>(text[i]);
    if (std::isalnum(c)) {
      word += static_cast<char>(std::tolower(c));
    } else if (c >= 0x80 && i + 1 < text.size()) {
      char plain = PlainLetter(c, static_cast<unsigned char>(text[i + 1]));
      if (plain != 0) {
        word += plain;
        ++i;
      } else {
        flush();
      }
    } else {
      flush();
    }
  }
  flush();
  return words;
}

long DayNumber(std::string_view date) {
  LDate day;
  return LDate::Parse(date, day) ? day.DayNumber() : 0;
}

// What is known of the party and documents of one ledger line, looked up once per document.
struct LLedgerFacts {
  std::vector<std::string> nameWords;  // the customer's or supplier's name
  std::vector<std::string> documents;  // invoice keys the payment settles, and its own key
};

class LFactsCache {
 public:
  explicit LFactsCache(LProfile& profile) : profile_(profile) {}

  const LLedgerFacts& Get(const LBankLedgerLine& line) {
    std::string key = line.type + "|" + line.document;
    auto found = cache_.find(key);
    if (found != cache_.end()) return found->second;
    LLedgerFacts facts;
    if (!line.document.empty()) Fill(line, facts);
    return cache_.emplace(key, std::move(facts)).first->second;
  }

 private:
  std::string PartyName(std::string_view list, const std::string& key) {
    LRecord party;
    if (key.empty() || !profile_.List(list).Open(party, key)) return key;
    std::string name = party.GetString("Name");
    return name.empty() ? key : name;
  }

  void Fill(const LBankLedgerLine& line, LLedgerFacts& facts) {
    if (line.type == "Reçus") {
      LPayment payment;
      if (!profile_.List(kPaymentsList).Open(payment, line.document)) return;
      facts.nameWords = Words(PartyName(kCustomersList, payment.GetCustomer()));
      std::string invoices = payment.GetString("InvoiceNumber");
      for (std::size_t start = 0; start <= invoices.size();) {
        std::size_t comma = invoices.find(',', start);
        std::string invoice = invoices.substr(start, comma - start);
        if (!invoice.empty()) facts.documents.push_back(invoice);
        if (comma == std::string::npos) break;
        start = comma + 1;
      }
      facts.documents.push_back(line.document);
    } else if (line.type == "Paiements") {
      LBillPayment payment;
      if (!profile_.List(kBillPaymentsList).Open(payment, line.document)) return;
      facts.nameWords = Words(PartyName("Suppliers", payment.GetString("Supplier")));
    }
  }

  LProfile& profile_;
  std::unordered_map<std::string, LLedgerFacts> cache_;
};

bool Contains(const std::vector<std::string>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// A document key found among the words: as a word of its own ("1042", "fa1042") or, for a key
// of digits, as the digits of a word ("f1042").
bool MentionsDocument(const std::vector<std::string>& words, const std::string& key) {
  std::vector<std::string> keyWords = Words(key);
  if (keyWords.size() != 1) return false;
  const std::string& plain = keyWords[0];
  for (const std::string& word : words)
    if (word == plain || (plain.size() >= 3 && LStatementDigits(word) == plain && LStatementDigits(plain) == plain))
      return true;
  return false;
}

int Score(const LBankLine& bank, long bankDay, const std::vector<std::string>& bankWords,
          const LBankLedgerLine& ledger, const LLedgerFacts& facts) {
  long days = std::labs(bankDay - ledger.dayNumber);
  int score = kScoreAmount;
  score -= bank.chequeNumber.empty() ? static_cast<int>(days) * kScorePerDay
                                     : static_cast<int>(days / kScoreChequeDivisor);
  if (!bank.chequeNumber.empty()) {
    std::string number = bank.chequeNumber;
    number.erase(0, std::min(number.find_first_not_of('0'), number.size()));
    std::string refDigits = LStatementDigits(ledger.reference);
    bool inRef = !number.empty() && refDigits.size() >= number.size() && refDigits.ends_with(number);
    bool inText = !number.empty() && Contains(Words(ledger.description), number);
    if (inRef || inText) score += kScoreCheque;
  }
  std::vector<std::string> refWords = Words(ledger.reference);
  if (refWords.size() == 1 && Contains(bankWords, refWords[0])) score += kScoreReference;
  for (const std::string& document : facts.documents) {
    if (MentionsDocument(bankWords, document)) {
      score += kScoreDocument;
      break;
    }
  }
  const std::vector<std::string>& name = facts.nameWords.empty() ? Words(ledger.description) : facts.nameWords;
  std::size_t found = 0, counted = 0;
  for (const std::string& word : name) {
    if (word.size() < 2) continue;
    ++counted;
    found += Contains(bankWords, word);
  }
  if (counted > 0 && found == counted) score += kScoreName;
  else if (counted > 0 && found * 2 >= counted && !facts.nameWords.empty()) score += kScoreName / 2;
  return score;
}

bool InWindow(const LBankLine& bank, long bankDay, long ledgerDay) {
  long before = bank.chequeNumber.empty() ? kBankMatchDaysBefore : kBankMatchChequeDaysBefore;
  return ledgerDay >= bankDay - before && ledgerDay <= bankDay + kBankMatchDaysAfter;
}

struct LPair {
  std::size_t line;    // index into lines
  std::size_t ledger;  // index into ledger
  int score;
};

}  // namespace

std::vector<std::string> LBankTextWords(std::string_view text) { return Words(text); }

std::vector<LBankLedgerLine> LBankLoadLedgerLines(const LProfile& profile, std::string_view account,
                                                  std::string_view from, std::string_view to,
                                                  const std::vector<std::pair<std::string, std::string>>& held,
                                                  std::set<std::string>* present) {
  std::set<std::string> cleared;  // "date|REFERENCE|amount" of reconciled rows
  LTextBuffer reconcilePath;
  LReconcileGetCSVFilePath(profile, reconcilePath, account);
  if (LFile::Exists(std::string(reconcilePath))) {
    LCSVFileReader reader(std::string(reconcilePath), kLedgerLockTimeoutMs);
    for (; reader.HasRow(); reader.Next()) {
      LCSVReaderRow row(reader.GetLine());
      std::string date = row.GetCol(), reference = row.GetCol(), amount = row.GetCol();
      cleared.insert(date + "|" + LAsciiUpper(reference) + "|" + std::to_string(LLedgerReadAmountFromTheLedger(amount)));
    }
  }
  std::set<std::string> heldKeys;
  for (const auto& [date, reference] : held) {
    heldKeys.insert(date + "|" + LAsciiUpper(reference));
  }
  std::vector<LBankLedgerLine> lines;
  LLedgerAccountLineIterator it(profile, from, to);
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    const LLedgerJournalLine& line = it.line;
    if (line.account != account) continue;
    std::string transaction = line.date + "|" + LAsciiUpper(line.reference);
    if (present != nullptr) present->insert(line.date + " " + LAsciiUpper(line.reference));
    if (heldKeys.contains(transaction) || cleared.contains(transaction + "|" + std::to_string(line.amount))) continue;
    lines.push_back({line.date, line.reference, line.type, line.description, line.document, line.amount,
                     DayNumber(line.date)});
  }
  return lines;
}

void LBankMatchLines(LProfile& profile, std::vector<LBankLine>& lines, const std::vector<std::size_t>& pending,
                     const std::vector<LBankLedgerLine>& ledger) {
  std::unordered_multimap<long long, std::size_t> byAmount;
  byAmount.reserve(ledger.size());
  for (std::size_t i = 0; i < ledger.size(); ++i) byAmount.emplace(ledger[i].amount, i);

  LFactsCache facts(profile);
  std::vector<LPair> pairs;
  for (std::size_t index : pending) {
    LBankLine& bank = lines[index];
    bank.status = LBankLineStatus::kNew;
    bank.ledgerDate.clear();
    bank.ledgerReference.clear();
    long bankDay = DayNumber(bank.date);
    auto [first, last] = byAmount.equal_range(bank.amount);
    if (first == last) continue;
    std::vector<std::string> bankWords = Words(bank.text);
    for (auto it = first; it != last; ++it) {
      const LBankLedgerLine& candidate = ledger[it->second];
      if (!InWindow(bank, bankDay, candidate.dayNumber)) continue;
      pairs.push_back({index, it->second, Score(bank, bankDay, bankWords, candidate, facts.Get(candidate))});
    }
  }
  // Best first; equal scores in statement order, then ledger order, so that results repeat.
  std::sort(pairs.begin(), pairs.end(), [](const LPair& a, const LPair& b) {
    if (a.score != b.score) return a.score > b.score;
    return a.line != b.line ? a.line < b.line : a.ledger < b.ledger;
  });
  std::map<std::size_t, std::vector<const LPair*>> byLine, byLedger;
  for (const LPair& pair : pairs) {
    byLine[pair.line].push_back(&pair);
    byLedger[pair.ledger].push_back(&pair);
  }
  std::set<std::size_t> linesTaken, ledgerTaken;
  for (const LPair& pair : pairs) {
    if (linesTaken.contains(pair.line) || ledgerTaken.contains(pair.ledger)) continue;
    int rival = -1000;
    for (const LPair* other : byLine[pair.line])
      if (other != &pair && !ledgerTaken.contains(other->ledger)) rival = std::max(rival, other->score);
    for (const LPair* other : byLedger[pair.ledger])
      if (other != &pair && !linesTaken.contains(other->line)) rival = std::max(rival, other->score);
    LBankLine& bank = lines[pair.line];
    bank.status = rival > pair.score - kBankMatchNearTie ? LBankLineStatus::kSuggested : LBankLineStatus::kMatched;
    bank.ledgerDate = ledger[pair.ledger].date;
    bank.ledgerReference = ledger[pair.ledger].reference;
    linesTaken.insert(pair.line);
    ledgerTaken.insert(pair.ledger);
  }
}
