#include "accounts/ofx.h"

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "accounts/sgml.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/text.h"

namespace {

constexpr std::string_view kErrorNoPath = "Impossible d'ouvrir le fichier OFX.";
constexpr std::string_view kErrorEmptyOrWrong = "Le fichier est vide ou il s'agit du fichier OFX incorrect";
constexpr std::string_view kErrorNoOFX = "Erreur de lecture du fichier OFX.";

constexpr std::size_t kMinBodyBytes = 6;  // a body of 5 bytes or fewer cannot hold a statement

// ---- Header -----------------------------------------------------------------------------------

// Finds where the body starts, reading the header in lines of at most 259 bytes (a longer line
// is read as several). A blank line ends the header and the body follows it; a line holding
// "<OFX>" ends it too and the body starts with that line itself, so that files without the blank
// line read the same. false when the file ends inside the header.
bool FindBody(std::string_view file, std::size_t& bodyStart) {
  std::size_t position = 0;
  while (position < file.size()) {
    std::size_t lineEnd = file.find('\n', position);
    std::size_t length = lineEnd == std::string_view::npos ? file.size() - position : lineEnd - position + 1;
    if (length > kMaxTextBytes) length = kMaxTextBytes;
    std::string_view line = file.substr(position, length);
    if (line[0] == '\r' || line[0] == '\n') {
      bodyStart = position + length;
      return true;
    }
    if (line.find("<OFX>") != std::string_view::npos) {
      bodyStart = position;
      return true;
    }
    position += length;  // a header field "NAME:VALUE", not used
  }
  return false;
}

// ---- Temporary copy ---------------------------------------------------------------------------

// The body written to a fresh file "0XXXXXX" of the temporary folder, removed with the object.
class LTemporaryBodyFile {
 public:
  LTemporaryBodyFile() = default;
  ~LTemporaryBodyFile() {
    if (created_) ::unlink(path_.c_str());
  }
  LTemporaryBodyFile(const LTemporaryBodyFile&) = delete;
  LTemporaryBodyFile& operator=(const LTemporaryBodyFile&) = delete;

  // false when the file cannot be made or written; Path() then names the pattern or the file.
  bool Write(std::string_view body) {
    path_ = LFile::GetTempFolder() + "/0XXXXXX";
    std::vector<char> name(path_.begin(), path_.end());
    name.push_back('\0');
    LFileDescriptor file(::mkostemps(name.data(), 0, O_CLOEXEC));
    if (!file.IsOpen()) return false;
    path_ = name.data();
    created_ = true;
    return LRobustWrite(file.Get(), body.data(), body.size());
  }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;      // the file, or its pattern before it exists
  bool created_ = false;  // the file exists and is ours to remove
};

// ---- Message sets -----------------------------------------------------------------------------

struct LMessageSetNames {
  std::string_view prefix;               // name of the message set, without its version digit
  std::string_view transactionResponse;  // the statement transaction response
  std::string_view statementResponse;    // the statement itself
  std::string_view account;              // the account the statement is for
};

constexpr LMessageSetNames kBankNames = {"BANKMSGSRSV", "STMTTRNRS", "STMTRS", "BANKACCTFROM"};
constexpr LMessageSetNames kCreditCardNames = {"CREDITCARDMSGSRSV", "CCSTMTTRNRS", "CCSTMTRS", "CCACCTFROM"};

bool IsFilled(const LSGMLElement* element) { return element != nullptr && element->HasChildren(); }

void ReadLine(const LSGMLElement& transaction, int currencyDigits, LBankStatement& statement) {
  auto item = std::make_unique<LBankStatementItem>();
  // TRNTYPE (debit, credit, check...) plays no part: the amount's sign says which way money went.
  std::string text;
  transaction.GetString("DTPOSTED", "", text);
  item->date = OFXDate2Time(text).GetDateTime();
  double amount = transaction.GetFloat("TRNAMT", 0);
  item->amount = amount != 0 ? LOFXAmountToMinorUnits(amount, currencyDigits) : 0;
  transaction.GetString("FITID", "", item->id);
  std::string name, memo;
  transaction.GetString("NAME", "", name);
  transaction.GetString("MEMO", "", memo);
  item->description = name.empty() ? memo : (memo.empty() ? name : name + "; " + memo);
  statement.AddLineAtHead(std::move(item));
}

// Reads one message set into statement. false when it lacks the statement or its list of
// transactions, which ends the reading of the file.
bool ReadMessageSet(const LSGMLElement& messageSet, const LMessageSetNames& names, int currencyDigits,
                    LBankStatement& statement) {
  const LSGMLElement* response = messageSet.GetElement(names.transactionResponse);
  if (!IsFilled(response)) return false;
  const LSGMLElement* statementResponse = response->GetElement(names.statementResponse);
  if (!IsFilled(statementResponse)) return false;

  const LSGMLElement* account = statementResponse->GetElement(names.account);
  if (account != nullptr) account->GetString("ACCTID", "", statement.accountId);
  else statement.accountId.clear();

  const LSGMLElement* list = statementResponse->GetElement("BANKTRANLIST");
  if (list == nullptr) return false;
  std::string text;
  list->GetString("DTSTART", "", text);
  statement.periodStart = OFXDate2Time(text);
  list->GetString("DTEND", "", text);
  statement.periodEnd = OFXDate2Time(text);

  if (const LSGMLElement* balance = statementResponse->GetElement("LEDGERBAL")) {
    double amount = balance->GetFloat("BALAMT", 0);
    if (amount != 0) statement.ledgerBalance = LOFXAmountToMinorUnits(amount, currencyDigits);
  }

  LSGMLElement::ConstNamedElementIterator transactions(*list, "STMTTRN");
  while (const LSGMLElement* transaction = transactions.Next()) ReadLine(*transaction, currencyDigits, statement);
  return true;
}

void ReadStatement(const LSGMLElement& ofx, int currencyDigits, LBankStatement& statement) {
  for (const LSGMLElement* child = ofx.GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    std::string_view name = child->GetName();
    const LMessageSetNames* names = nullptr;
    if (name.starts_with(kBankNames.prefix)) names = &kBankNames;
    else if (name.starts_with(kCreditCardNames.prefix)) names = &kCreditCardNames;
    if (names != nullptr && !ReadMessageSet(*child, *names, currencyDigits, statement)) return;
  }
}

// The C library's float-to-int conversion is undefined outside the target range; a time zone
// such as "[1e30:X]" or "[nan:X]" must not reach it.
int TruncateToInt(float value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483648.0f) return INT32_MAX;
  if (value <= -2147483648.0f) return INT32_MIN;
  return static_cast<int>(value);
}

}  // namespace

// ---- Dates and amounts ------------------------------------------------------------------------

LDateTime OFXDate2Time(std::string_view text) {
  LDateTime result;
  std::string copy(LTruncated(text, kMaxTextBytes));
  copy.resize(std::strlen(copy.c_str()));
  if (copy.empty()) {
    result.SetDateTime(0, 0, 0, 0, 0, 0);
    return result;
  }
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  float zoneHours = 0;
  // The zone's name after the ":" is read past and not used: the offset alone places the time.
  int fields = std::sscanf(copy.c_str(), "%4d%2d%2d%2d%2d%2d.%*3d[%f:%*s", &year, &month, &day, &hour,
                           &minute, &second, &zoneHours);
  if (year < 70) year += 100;
  else if (year >= 1900) year -= 1900;

  if (fields >= 7) {
    // From the zone's clock to this machine's: back to UTC by the zone's offset, then forward by
    // how far the local clock is ahead of UTC now. The offset is scaled in single precision.
    long localBehindUtc = -LLocalClockAheadOfUtcNow();
    second = TruncateToInt(static_cast<float>(second - localBehindUtc) - zoneHours * 3600.0f);
  } else if (copy.size() < 9) {
    hour = 11;
    minute = 59;
    second = 0;
  }
  result.SetDateTime(year, month, day, hour, minute, second);
  return result;
}

long long LOFXAmountToMinorUnits(double amount, int currencyDigits) {
  double scale = currencyDigits == 3 ? 1000.0 : currencyDigits == 2 ? 100.0 : currencyDigits == 1 ? 10.0 : 1.0;
  double scaled = amount * scale;
  if (!(scaled > -2147483649.0 && scaled < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(scaled);
}

// ---- Reading a file ---------------------------------------------------------------------------

bool LOFXImportTransaction(LProfile& profile, const void* view, std::string_view path,
                           LBankStatement& statement, std::string& error) {
  error.clear();
  if (path.empty()) {
    error = kErrorNoPath;
    return false;
  }
  std::string file;
  std::size_t bodyStart = 0;
  if (!LFile::ReadAll(std::string(path), file) || !FindBody(file, bodyStart) ||
      file.size() - bodyStart < kMinBodyBytes) {
    error = kErrorEmptyOrWrong;
    return false;
  }

  LTemporaryBodyFile copy;
  std::string body;
  if (!copy.Write(std::string_view(file).substr(bodyStart)) || !LFile::ReadAll(copy.Path(), body)) {
    error = LTruncated("Impossible d'ouvrir le fichier xml : " + copy.Path(), kMaxTextBytes);
    return false;
  }
  file.clear();
  file.shrink_to_fit();

  LSGMLLoader loader(body, error);
  LSGMLElement root;
  root.LoadData(loader);
  const LSGMLElement* ofx = root.GetElement("OFX");
  if (ofx == nullptr) {
    error = kErrorNoOFX;
    return false;
  }
  ReadStatement(*ofx, profile.GetCurrencyDigits(), statement);
  return error.empty();
}
