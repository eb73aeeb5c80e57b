// A bank or credit-card statement as the bank sent it: the account it belongs to, the period it
// covers, the ledger balance at its end and its lines. The reconciliation and the import of
// transactions match these lines against the ledger; the statement itself only holds them.
//
// The lines are a singly linked list that readers fill by putting each new line at its head, so
// the list holds them in the reverse of the order in which they were read. Users of a statement
// sort the lines themselves and must not rely on the list order.
#pragma once

#include <memory>
#include <string>

#include "llib/gen/datetime.h"

class LBankStatementItem {
 public:
  std::string date;         // posting date, "YYYY-MM-DD"
  std::string id;           // the bank's transaction identifier, at most 259 bytes
  std::string description;  // payee and memo, any length
  long long amount = 0;     // minor currency units; positive money in, negative money out
  bool marked = false;      // set by the reconciliation once the line is matched; false on reading

  LBankStatementItem* GetNext() const { return next_.get(); }

 private:
  friend class LBankStatement;
  std::unique_ptr<LBankStatementItem> next_;  // the next line of the list
};

class LBankStatement {
 public:
  LBankStatement() = default;
  ~LBankStatement();
  LBankStatement(const LBankStatement&) = delete;
  LBankStatement& operator=(const LBankStatement&) = delete;

  std::string accountId;     // the bank's account identifier, at most 259 bytes
  LDateTime periodStart;     // first moment the statement covers
  LDateTime periodEnd;       // last moment the statement covers
  long long ledgerBalance = 0;  // minor currency units at the end of the period; 0 when not given

  // Puts item at the head of the list and returns it.
  LBankStatementItem& AddLineAtHead(std::unique_ptr<LBankStatementItem> item);
  // The first line of the list; null when there are none.
  LBankStatementItem* GetFirstLine() const { return firstLine_.get(); }
  std::size_t CountLines() const;

 private:
  std::unique_ptr<LBankStatementItem> firstLine_;  // head of the list of lines
};
