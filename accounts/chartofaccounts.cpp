#include "accounts/chartofaccounts.h"

#include <algorithm>
#include <vector>

#include "accounts/accounts.h"

void LChartOfAccounts::GenerateReport(LReportTable& table) const {
  struct Line {
    std::string number;
    std::string description;
    int type;
  };
  std::vector<Line> lines;
  LAccountList accounts(profile_);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accounts); it.IsValid(); it.Next())
    if (!it->IsDeleted()) lines.push_back({it->GetNumber(), it->GetDescription(), it->GetType()});
  std::sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.number < b.number; });

  table.title = "Plan comptable";
  constexpr int kSectionOrder[] = {kAccountAsset, kAccountIncome, kAccountLiability, kAccountExpense, kAccountEquity};
  for (int type : kSectionOrder) {
    table.AddHeading(LAccountTypeName(type));
    for (const Line& line : lines)
      if (line.type == type)
        table.AddRow(LReportRowKind::kAccount, line.number + " " + line.description, {}, 1).detail =
            LAccountNormalSideName(type);
  }
}
