#include "accounts/bankstatement.h"

// Lines are released one after the other: a recursive release along the list would run as deep
// as the statement is long.
LBankStatement::~LBankStatement() {
  std::unique_ptr<LBankStatementItem> line = std::move(firstLine_);
  while (line) line = std::move(line->next_);
}

LBankStatementItem& LBankStatement::AddLineAtHead(std::unique_ptr<LBankStatementItem> item) {
  item->next_ = std::move(firstLine_);
  firstLine_ = std::move(item);
  return *firstLine_;
}

std::size_t LBankStatement::CountLines() const {
  std::size_t count = 0;
  for (const LBankStatementItem* line = firstLine_.get(); line != nullptr; line = line->GetNext()) ++count;
  return count;
}
