#include "accounts/splitlines.h"

#include "accounts/accounts.h"
#include "invoice/shared/itemfield.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/record.h"

namespace {

constexpr std::string_view kNoLine = "Veuillez imputer le montant sur au moins un compte.";
constexpr std::string_view kHeading = "Le compte %s est un compte de regroupement : choisissez un de ses sous-comptes.";
constexpr std::string_view kSameAccount = "Une ligne ne peut pas être imputée sur le compte payeur lui-même.";
constexpr std::string_view kNotPositive = "Le montant de chaque ligne doit être positif.";
constexpr std::string_view kUnbalanced = "Le total des lignes (%s) ne correspond pas au montant (%s).";

constexpr std::string_view kNotCash = "Le compte %s n'est pas un compte de banque ou de caisse.";

std::string Replace(std::string_view format, std::string_view value) {
  std::string text(format);
  if (std::size_t at = text.find("%s"); at != std::string::npos) text.replace(at, 2, value);
  return text;
}

}  // namespace

bool LSplitRefuse(std::string* message, std::string_view text, std::string_view value) {
  return LFail(message, Replace(text, value));
}

bool LSplitPayingAccountCheck(const LProfile& profile, std::string_view account, std::string* message) {
  LAccount record;
  if (!LAccountList(profile).Open(record, account) || record.IsDeleted() || !record.IsCash() || record.IsHeader())
    return LSplitRefuse(message, kNotCash, account);
  return true;
}

bool LSplitLineParse(std::string_view word, const LCurrencyFormat& currency, LSplitLine& line, std::string& problem) {
  std::size_t first = word.find(':');
  std::size_t second = first == std::string_view::npos ? first : word.find(':', first + 1);
  std::string_view account = word.substr(0, first);
  std::string_view amount = first == std::string_view::npos ? std::string_view()
                                                              : word.substr(first + 1, second - first - 1);
  if (!account.empty() && LAmountTextIsBeyondCeiling(amount, currency.digits)) {
    problem = LAmountRefusal("la ligne " + std::string(account), amount, amount, currency);
    return false;
  }
  if (account.empty() || amount.empty() || !LParseAmount(amount, currency.digits, line.amount)) {
    problem = "ligne attendue sous la forme COMPTE:MONTANT[:LIBELLÉ] : " + std::string(word);
    return false;
  }
  line.account = std::string(account);
  line.memo = second == std::string_view::npos ? std::string() : std::string(word.substr(second + 1));
  return true;
}

bool LSplitLinesCheck(const LProfile& profile, const std::vector<LSplitLine>& lines, long long total,
                      std::string_view payingAccount, std::string* message) {
  if (lines.empty()) return LSplitRefuse(message, kNoLine);
  LAccountList accounts(profile);
  long long sum = 0;
  for (const LSplitLine& line : lines) {
    LAccount account;
    if (!accounts.Open(account, line.account) || account.IsDeleted())
      return LSplitRefuse(message, LAccountNotInChartMessage(line.account));
    if (account.IsHeader()) return LSplitRefuse(message, kHeading, line.account);
    if (line.account == payingAccount) return LSplitRefuse(message, kSameAccount);
    if (line.amount <= 0) return LSplitRefuse(message, kNotPositive);
    sum += line.amount;
  }
  if (sum != total) {
    const LCurrencyFormat& format = profile.GetCurrencyFormat();
    return LSplitRefuse(message, Replace(Replace(kUnbalanced, LFormatMoney(sum, format)), LFormatMoney(total, format)));
  }
  return true;
}

void LSplitLinesStore(LRecord& record, const std::vector<LSplitLine>& lines) {
  int count = record.GetInt("ItemCount", 0);
  for (int line = 1; line <= count; ++line)
    for (std::string_view name : {"Account", "Amount", "Memo"}) record.DeleteField(LItemField(line, name));
  record.SetInt("ItemCount", static_cast<int>(lines.size()));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    int line = static_cast<int>(i) + 1;
    record.SetString(LItemField(line, "Account"), lines[i].account);
    record.SetInt64(LItemField(line, "Amount"), lines[i].amount);
    if (!lines[i].memo.empty()) record.SetString(LItemField(line, "Memo"), lines[i].memo);
  }
}

std::vector<LSplitLine> LSplitLinesLoad(const LRecord& record) {
  std::vector<LSplitLine> lines;
  int count = record.GetInt("ItemCount", 0);
  for (int line = 1; line <= count; ++line)
    lines.push_back({record.GetString(LItemField(line, "Account")), record.GetInt64(LItemField(line, "Amount"), 0),
                     record.GetString(LItemField(line, "Memo"))});
  return lines;
}
