// The budget pages of the web access (budgetlist, budgetnew, budgetprop, budgetdelete), over
// accounts/budgets.h; the budget report is the report centre's (accounts/webreports.h).
#pragma once

void LAccountsInstallBudgetPages();
