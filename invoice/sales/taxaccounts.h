// The accounts that a business's taxes are collected into. The tax options name each tax's
// account by description ("TaxAccountPayable<n>"); a new business's chart may not hold every one
// of them (the Canadian provincial taxes have accounts of their own), so they are created with
// the default chart.
#pragma once

class LProfile;

// For every tax whose "TaxAccountPayable<n>" names a description that no account has, creates a
// liability account of that description at the first free number from 2411 on (from "2411"
// followed by zeros when the chart has more than four digits). Accounts that exist are left
// alone.
[[nodiscard]] bool LTaxOptionsCreateDefaultTaxAccounts(LProfile& profile);
