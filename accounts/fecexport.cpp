#include "accounts/fecexport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <unordered_map>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "accounts/audittrail.h"
#include "accounts/fec.h"
#include "accounts/fecthirdparty.h"
#include "invoice/shared/fiscalyear.h"
#include "accounts/ledgeriterator.h"
#include "invoice/shared/company.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/latin9.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr std::size_t kFlushBytes = 1 << 20;  // output buffered in pieces of about a megabyte

struct LFecJournal {
  std::string_view code;
  std::string_view name;
};
constexpr LFecJournal kSalesJournal{"VE", "Ventes"};
constexpr LFecJournal kPurchasesJournal{"AC", "Achats"};
constexpr LFecJournal kBankJournal{"BQ", "Banque"};
constexpr LFecJournal kGeneralJournal{"OD", "Opérations diverses"};
constexpr LFecJournal kOpeningJournal{"AN", "À-nouveaux"};

struct LFecAccount {
  std::string description;
  int type = 0;
  bool cash = false;
};

// What every line of the file needs to know, read once before the first line.
struct LFecContext {
  std::unordered_map<std::string, LFecAccount> accounts;
  LFecThirdParties thirdParties;
  std::unordered_map<std::string, std::string> postingDays;  // from the audit trail
  LDate closingDate;            // of the books ("CTDDate"), valid only when enabled
  bool closingEnabled = false;
  int digits = 2;
};

// A text field: the separator and line breaks would split the line.
std::string FieldText(std::string_view text) {
  std::string field(text);
  for (char& c : field) {
    if (c == '|') c = '/';
    else if (c == '\t' || c == '\r' || c == '\n') c = ' ';
  }
  return field;
}

// The file being written: a temporary beside the final name, lines buffered and encoded.
class LFecWriter {
 public:
  LFecWriter(std::string path, bool utf8) : path_(std::move(path)), temporary_(path_ + ".tmp"), utf8_(utf8) {
    fd_ = LFileDescriptor(LRobustOpen(temporary_, O_WRONLY | O_CREAT | O_TRUNC, 0666));
    ok_ = fd_.IsOpen();
  }
  ~LFecWriter() {
    if (!committed_) ::unlink(temporary_.c_str());
  }

  void AddLine(const std::array<std::string, kFecFieldCount>& fields) {
    line_.clear();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) line_ += '|';
      line_ += fields[i];
    }
    line_ += "\r\n";
    if (utf8_) buffer_ += line_;
    else replaced_ += LUtf8ToLatin9(line_, buffer_);
    if (buffer_.size() >= kFlushBytes) Flush();
  }

  // Writes what is left and puts the file in place; false when any write failed.
  bool Commit() {
    Flush();
    if (!ok_ || !LRobustFsync(fd_.Get())) return false;
    fd_.Close();
    if (!LRobustRename(temporary_, path_)) return false;
    committed_ = true;
    return true;
  }
  std::size_t Replaced() const { return replaced_; }

 private:
  void Flush() {
    if (ok_ && !buffer_.empty()) ok_ = LRobustWrite(fd_.Get(), buffer_.data(), buffer_.size());
    buffer_.clear();
  }

  std::string path_;
  std::string temporary_;
  bool utf8_;
  LFileDescriptor fd_;
  bool ok_ = false;
  bool committed_ = false;
  std::string line_;            // the line being encoded
  std::string buffer_;          // encoded lines not yet written
  std::size_t replaced_ = 0;    // characters written as "?"
};

// Numbers the entries of each journal and writes their lines.
class LFecEntryWriter {
 public:
  LFecEntryWriter(const LFecContext& context, LFecWriter& writer, LFecExportResult& result)
      : context_(context), writer_(writer), result_(result) {}

  // One entry: its journal, date, piece reference and validation day, and its lines.
  void Write(const LFecJournal& journal, const LDate& date, std::string_view pieceRef, const LDate& validDate,
             const std::vector<LLedgerJournalLine>& lines, const LFecThirdPartyLine* thirdParty) {
    std::string number = std::to_string(++numbers_[journal.code]);
    ++result_.entryCount;
    std::string dateText = LFecDateText(date);
    std::string validText = LFecDateText(validDate);
    bool thirdPartyFound = false;
    std::array<std::string, kFecFieldCount> fields;
    for (const LLedgerJournalLine& line : lines) {
      fields.fill({});
      fields[kFecJournalCode] = journal.code;
      fields[kFecJournalLib] = journal.name;
      fields[kFecEcritureNum] = number;
      fields[kFecEcritureDate] = dateText;
      fields[kFecCompteNum] = FieldText(line.account);
      auto account = context_.accounts.find(line.account);
      fields[kFecCompteLib] = FieldText(account != context_.accounts.end() && !account->second.description.empty()
                                            ? account->second.description
                                            : "Compte " + line.account);
      if (thirdParty != nullptr && !thirdPartyFound && line.amount == thirdParty->amount) {
        thirdPartyFound = true;
        fields[kFecCompAuxNum] = FieldText(thirdParty->auxNumber);
        fields[kFecCompAuxLib] = FieldText(thirdParty->auxName);
        if (!thirdParty->letter.empty()) {
          fields[kFecEcritureLet] = thirdParty->letter;
          fields[kFecDateLet] = LFecDateText(thirdParty->letterDate);
        }
      }
      fields[kFecPieceRef] = FieldText(pieceRef);
      fields[kFecPieceDate] = dateText;
      fields[kFecEcritureLib] = FieldText(line.description.empty() ? pieceRef : line.description);
      long long debit = line.amount > 0 ? line.amount : 0;
      long long credit = line.amount < 0 ? -line.amount : 0;
      fields[kFecDebit] = LFecAmountText(debit, context_.digits);
      fields[kFecCredit] = LFecAmountText(credit, context_.digits);
      fields[kFecValidDate] = validText;
      writer_.AddLine(fields);
      result_.debitTotal += debit;
      result_.creditTotal += credit;
      ++result_.lineCount;
    }
  }

 private:
  const LFecContext& context_;
  LFecWriter& writer_;
  LFecExportResult& result_;
  std::map<std::string_view, long long> numbers_;  // last EcritureNum of each journal
};

const LFecJournal& JournalOf(const LFecContext& context, std::string_view type,
                             const std::vector<LLedgerJournalLine>& lines) {
  if (type == kTxnTypeSales) return kSalesJournal;
  if (type == kTxnTypePurchase) return kPurchasesJournal;
  if (type == kTxnTypeReceipt || type == kTxnTypeBillPayment) return kBankJournal;
  if (type == kTxnTypeGeneral) return kGeneralJournal;
  for (const auto& line : lines) {
    auto account = context.accounts.find(line.account);
    if (account != context.accounts.end() && account->second.cash) return kBankJournal;
  }
  return kGeneralJournal;
}

LDate ValidDateOf(const LFecContext& context, const LDate& date, std::string_view reference) {
  auto posted = context.postingDays.find(LAuditTransactionKey(date.ToText(), reference));
  LDate day;
  if (posted != context.postingDays.end() && LDate::Parse(posted->second, day)) return day;
  if (context.closingEnabled && !(context.closingDate < date)) return context.closingDate;
  return date;
}

// The à-nouveaux entry: balances carried into the year that begins on start.
void WriteOpening(LProfile& profile, const LFecContext& context, const LDate& start, LFecEntryWriter& entries) {
  LAccountTotalerProcess totaler(profile);
  totaler.to = start.AddDays(-1).ToText();
  LProcessInterfaceVoid quiet;
  if (Process(quiet, totaler) != kProcessFinished) return;
  std::string resultAccount = LGetOpeningBalanceAccountNumber(profile);
  std::vector<LLedgerJournalLine> lines;
  long long earlierResult = 0;
  for (const auto& item : totaler.result.Items()) {
    if (item.amount == 0) continue;
    bool result = item.type == kAccountIncome || item.type == kAccountExpense;
    if (result && !resultAccount.empty()) {
      earlierResult += item.amount;
      continue;
    }
    LLedgerJournalLine& line = lines.emplace_back();
    line.account = item.number;
    line.amount = item.amount;
  }
  if (earlierResult != 0) {
    bool merged = false;
    for (auto& line : lines)
      if (line.account == resultAccount) line.amount += earlierResult, merged = true;
    if (!merged) {
      LLedgerJournalLine& line = lines.emplace_back();
      line.account = resultAccount;
      line.amount = earlierResult;
    }
  }
  std::erase_if(lines, [](const LLedgerJournalLine& line) { return line.amount == 0; });
  if (lines.empty()) return;
  for (auto& line : lines) line.description = "À-nouveaux";
  entries.Write(kOpeningJournal, start, "AN" + std::to_string(start.year), start, lines, nullptr);
}

// The transactions of one day file, in the order of their first rows.
void WriteDay(const LFecContext& context, std::vector<LLedgerJournalLine>& rows, LFecEntryWriter& entries) {
  std::vector<std::string> order;
  std::unordered_map<std::string, std::vector<LLedgerJournalLine>> byReference;
  for (auto& row : rows) {
    std::string key = LFecReferenceKey(row.reference);
    auto& lines = byReference[key];
    if (lines.empty()) order.push_back(key);
    lines.push_back(std::move(row));
  }
  rows.clear();
  for (const auto& key : order) {
    const auto& lines = byReference[key];
    const LLedgerJournalLine& first = lines.front();
    LDate date;
    if (!LDate::Parse(first.date, date)) continue;
    std::string document;
    for (const auto& line : lines)
      if (document.empty()) document = line.document;
    const LFecThirdPartyLine* thirdParty = context.thirdParties.Find(lines.back().type, document, first.reference);
    entries.Write(JournalOf(context, lines.back().type, lines), date, first.reference, ValidDateOf(context, date, first.reference),
                  lines, thirdParty);
  }
}

}  // namespace

bool LFecExport(LProfile& profile, const LFecExportOptions& options, LFecExportResult& result, std::string* error) {
  result = {};
  if (options.year < 2 || options.year > 9999)
    return LFail(error, "Exercice invalide : " + std::to_string(options.year));
  LCompany company;
  company.OpenFrom(profile);
  std::string siren = company.GetSiren();
  if (!LFecIsSiren(siren))
    return LFail(error,
                 "Le numéro SIREN de l'entreprise (9 chiffres) est nécessaire pour nommer le fichier des écritures "
                 "comptables : renseignez le champ « SIREN » de la fiche de l'entreprise.");
  // The fiscal year that holds the 1st of January of the year is the one that ends in it.
  LDTPeriod year = LFiscalYearOf(profile, LDate(options.year, 1, 1));
  LDate start, end;
  if (!LDate::Parse(year.from, start) || !LDate::Parse(year.to, end))
    return LFail(error, "Exercice invalide : " + std::to_string(options.year));

  LFecContext context;
  context.digits = profile.GetCurrencyDigits();
  context.closingEnabled =
      company.GetBool("CTDEnabled", false) && LDate::Parse(company.GetString("CTDDate"), context.closingDate);
  LAccountList accountList(profile);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accountList); it.IsValid(); it.Next())
    context.accounts[it->GetNumber()] = {it->GetDescription(), it->GetType(), it->IsCash()};
  context.thirdParties.Load(profile, end);
  context.postingDays = LAuditPostingDays(profile);

  std::string folder = options.folder.empty() ? std::string(".") : options.folder;
  result.path = LFile::MakeFilePath(folder, LFecFileName(siren, end));
  LFecWriter writer(result.path, options.utf8);
  std::array<std::string, kFecFieldCount> header;
  for (std::size_t i = 0; i < kFecFieldCount; ++i) header[i] = kFecFieldNames[i];
  writer.AddLine(header);
  LFecEntryWriter entries(context, writer, result);
  WriteOpening(profile, context, start, entries);

  std::vector<LLedgerJournalLine> day;
  std::string dayFile;
  LLedgerAccountLineIterator it(profile, start.ToText(), end.ToText());
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.GetFileName() != dayFile) {
      WriteDay(context, day, entries);
      dayFile = it.GetFileName();
    }
    day.push_back(std::move(it.line));
  }
  WriteDay(context, day, entries);
  result.replacedCount = writer.Replaced();
  if (!writer.Commit()) {
    std::string path = result.path;
    result = {};
    return LFail(error, "Impossible d'écrire le fichier " + path + ".");
  }
  return true;
}
