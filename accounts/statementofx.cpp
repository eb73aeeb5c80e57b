// OFX read whole: the tag tree of accounts/markup.h takes both forms alike, so a file written
// in XML, or in SGML with its leaves closed, gives all its transactions. (`kontavo import ofx`
// keeps showing what the literal SGML reader of accounts/ofx.h makes of the same file.)
#include <string>

#include "accounts/markup.h"
#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"

namespace {

struct LOFXNames {
  std::string_view messageSet;  // prefix of the message set's name
  std::string_view statement;   // the statement aggregate
  std::string_view account;     // the account aggregate
};

constexpr LOFXNames kBank = {"BANKMSGSRSV", "STMTRS", "BANKACCTFROM"};
constexpr LOFXNames kCard = {"CREDITCARDMSGSRSV", "CCSTMTRS", "CCACCTFROM"};

std::string Describe(const LMarkupElement& transaction) {
  // NAME may sit in a PAYEE aggregate in the XML form.
  std::string name = LStatementCleanText(transaction.FindText("NAME"));
  std::string memo = LStatementCleanText(transaction.FindText("MEMO"));
  if (name.empty()) return memo;
  if (memo.empty() || memo == name) return name;
  return name + "; " + memo;
}

bool ReadTransaction(const LMarkupElement& transaction, const LCurrencyFormat& currency, std::size_t number, LStatementEntry& line,
                     std::string& error) {
  std::string fitId = transaction.FindText("FITID");
  std::string posted = transaction.FindText("DTPOSTED");
  if (posted.empty()) posted = transaction.FindText("DTUSER");
  std::string what = "l'opération " + std::to_string(number) + (fitId.empty() ? "" : " (" + fitId + ")");
  if (!LStatementParseDate(posted.substr(0, 8), true, line.date)) {
    error = "Relevé OFX refusé : " + what + " n'a pas de date valide (« " + posted + " »).";
    return false;
  }
  std::string amount = transaction.FindText("TRNAMT");
  if (!LStatementParseAmount(amount, 0, currency.digits, line.amount)) {
    std::string beyond = LStatementAmountBeyondCeiling(what, amount, 0, currency);
    error = "Relevé OFX refusé : " +
            (beyond.empty() ? what + " n'a pas de montant valide (« " + amount + " »)." : beyond);
    return false;
  }
  line.bankId = fitId;
  line.text = Describe(transaction);
  line.chequeNumber = transaction.FindText("CHECKNUM");
  return true;
}

bool ReadStatement(const LMarkupElement& statement, const LOFXNames& names, const LCurrencyFormat& currency,
                   std::vector<LStatementAccount>& out, std::string& error) {
  LStatementAccount account;
  if (const LMarkupElement* from = statement.Find(names.account, "STMTTRN"))
    account.accountId = from->FindText("ACCTID");
  if (const LMarkupElement* balance = statement.Find("LEDGERBAL", "STMTTRN")) {
    long long amount = 0;
    if (LStatementParseAmount(balance->FindText("BALAMT"), 0, currency.digits, amount)) {
      account.closing = amount;
      std::string asOf = balance->FindText("DTASOF");
      if (!LStatementParseDate(asOf.substr(0, 8), true, account.closingDate)) account.closingDate.clear();
    }
  }
  std::vector<const LMarkupElement*> transactions;
  statement.FindAll("STMTTRN", transactions);
  for (std::size_t i = 0; i < transactions.size(); ++i) {
    LStatementEntry line;
    if (!ReadTransaction(*transactions[i], currency, i + 1, line, error)) return false;
    account.lines.push_back(std::move(line));
  }
  out.push_back(std::move(account));
  return true;
}

}  // namespace

bool LStatementReadOFX(std::string_view bytes, const LCurrencyFormat& currency, std::vector<LStatementAccount>& statements,
                       std::string& error) {
  std::string text = LStatementTextToUtf8(bytes);
  std::size_t body = text.find("<OFX>");
  if (body == std::string::npos) body = text.find("<OFX ");
  if (body == std::string::npos) {
    error = "Le fichier n'est pas un relevé OFX : l'élément <OFX> est introuvable.";
    return false;
  }
  LMarkupElement root;
  LMarkupRead(std::string_view(text).substr(body), root);
  const LMarkupElement* ofx = root.Child("OFX");
  std::size_t before = statements.size();
  for (const auto& set : ofx != nullptr ? ofx->children : root.children) {
    const LOFXNames* names = set->name.starts_with(kBank.messageSet)   ? &kBank
                             : set->name.starts_with(kCard.messageSet) ? &kCard
                                                                        : nullptr;
    if (names == nullptr) continue;
    std::vector<const LMarkupElement*> found;
    set->FindAll(names->statement, found);
    for (const LMarkupElement* statement : found)
      if (!ReadStatement(*statement, *names, currency, statements, error)) return false;
  }
  if (statements.size() == before) {
    error = "Le fichier OFX ne contient aucun relevé de compte bancaire ou de carte de crédit.";
    return false;
  }
  return true;
}
