// camt.053, the ISO 20022 bank-to-customer statement: Document/BkToCstmrStmt/Stmt, each with its
// account (Acct/Id: IBAN, or Othr/Id), balances (Bal: type code, amount, CdtDbtInd, date) and
// entries (Ntry: amount, CdtDbtInd, booking date, status, references, details).
#include <algorithm>

#include "accounts/markup.h"
#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"

namespace {

// Amt with its CdtDbtInd: a debit is money out.
bool SignedAmount(const LMarkupElement& holder, int digits, long long& out) {
  const LMarkupElement* amount = holder.Child("Amt");
  if (amount == nullptr || !LStatementParseAmount(amount->text, '.', digits, out)) return false;
  if (holder.FindText("CdtDbtInd") == "DBIT") out = -out;
  return true;
}

// The refusal of the amount of holder (an entry or a balance) that SignedAmount did not read.
std::string AmountRefused(const LMarkupElement& holder, const std::string& what, const LCurrencyFormat& currency) {
  const LMarkupElement* amount = holder.Child("Amt");
  std::string beyond = amount == nullptr ? std::string() : LStatementAmountBeyondCeiling(what, amount->text, '.', currency);
  return "Relevé camt.053 refusé : " + (beyond.empty() ? what + " n'a pas de montant valide." : beyond);
}

// Dt, or the date part of DtTm, inside element.
bool DateOf(const LMarkupElement* element, std::string& out) {
  if (element == nullptr) return false;
  std::string text = element->FindText("Dt");
  if (text.empty()) text = element->FindText("DtTm");
  return LStatementParseDate(text.substr(0, 10), true, out);
}

std::string EntryText(const LMarkupElement& entry, bool credit) {
  std::vector<std::string> parts;
  auto add = [&](std::string text) {
    text = LStatementCleanText(text);
    if (!text.empty() && std::find(parts.begin(), parts.end(), text) == parts.end()) parts.push_back(text);
  };
  // The other party: who paid us on a credit, whom we paid on a debit.
  if (const LMarkupElement* parties = entry.Find("RltdPties")) {
    const LMarkupElement* party = parties->Child(credit ? "Dbtr" : "Cdtr");
    if (party != nullptr) add(party->FindText("Nm"));
  }
  std::vector<const LMarkupElement*> remittances;
  entry.FindAll("Ustrd", remittances);
  for (const LMarkupElement* remittance : remittances) add(remittance->text);
  add(entry.FindText("AddtlTxInf"));
  add(entry.FindText("AddtlNtryInf"));
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : " ") + part;
  return text;
}

bool ReadEntry(const LMarkupElement& entry, const LCurrencyFormat& currency, std::size_t number, LStatementEntry& line,
               std::string& error) {
  std::string what = "l'écriture " + std::to_string(number);
  if (!SignedAmount(entry, currency.digits, line.amount)) {
    error = AmountRefused(entry, what, currency);
    return false;
  }
  if (!DateOf(entry.Child("BookgDt"), line.date) && !DateOf(entry.Child("ValDt"), line.date)) {
    error = "Relevé camt.053 refusé : " + what + " n'a pas de date valide.";
    return false;
  }
  line.bankId = entry.FindText("AcctSvcrRef", "NtryDtls");
  if (line.bankId.empty()) line.bankId = entry.FindText("NtryRef");
  line.text = EntryText(entry, line.amount > 0);
  line.chequeNumber = entry.FindText("ChqNb");
  return true;
}

bool IsBooked(const LMarkupElement& entry) {
  const LMarkupElement* status = entry.Child("Sts");
  if (status == nullptr) return true;
  std::string code = status->text.empty() ? status->FindText("Cd") : status->text;
  return code.empty() || code == "BOOK";
}

bool ReadStatement(const LMarkupElement& statement, const LCurrencyFormat& currency, std::vector<LStatementAccount>& out,
                   std::string& error) {
  LStatementAccount account;
  if (const LMarkupElement* id = statement.Child("Acct") ? statement.Child("Acct")->Child("Id") : nullptr) {
    account.accountId = id->FindText("IBAN");
    if (account.accountId.empty()) account.accountId = id->FindText("Id");
  }
  for (const auto& balance : statement.children) {
    if (balance->name != "Bal") continue;
    std::string type = balance->FindText("Cd");
    long long amount = 0;
    if (!SignedAmount(*balance, currency.digits, amount)) {
      error = AmountRefused(*balance, "le solde " + type, currency);
      return false;
    }
    if (type == "OPBD" || (type == "PRCD" && !account.opening)) account.opening = amount;
    if (type == "CLBD") {
      account.closing = amount;
      if (!DateOf(balance->Child("Dt"), account.closingDate)) account.closingDate.clear();
    }
  }
  std::size_t number = 0;
  for (const auto& entry : statement.children) {
    if (entry->name != "Ntry") continue;
    ++number;
    if (!IsBooked(*entry)) continue;
    LStatementEntry line;
    if (!ReadEntry(*entry, currency, number, line, error)) return false;
    account.lines.push_back(std::move(line));
  }
  out.push_back(std::move(account));
  return true;
}

}  // namespace

bool LStatementReadCamt(std::string_view bytes, const LCurrencyFormat& currency, std::vector<LStatementAccount>& statements,
                        std::string& error) {
  LMarkupElement root;
  LMarkupRead(LStatementTextToUtf8(bytes), root);
  std::vector<const LMarkupElement*> found;
  root.FindAll("Stmt", found);
  if (found.empty()) root.FindAll("Rpt", found);
  if (found.empty()) {
    error = "Le fichier n'est pas un relevé camt.053 : aucun relevé (Stmt) n'y figure.";
    return false;
  }
  for (const LMarkupElement* statement : found)
    if (!ReadStatement(*statement, currency, statements, error)) return false;
  return true;
}
