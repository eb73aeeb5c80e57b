// What the VAT return tests of the command line and of the pages share: the sale they declare
// and the return HMRC receives for it.
#pragma once

#include "tests/app/clitest.h"

// One tax "VAT" at 20 % and an invoice of customer C1 (Smith) dated 2000-05-01 for 150.75 before
// tax: output tax 30.15, sales 150.75.
inline void LRecordVatReturnSale() {
  LExpectSuccess({"tax", "set", "--count", "1", "--name", "1=VAT", "--rate", "1=20", "--default", "1"});
  LExpectSuccess({"customer", "add", "C1", "Name=Smith"});
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2000-05-01", "--line", "|Work|1|150.75|VAT|"});
}

// The body HMRC receives for period 00A2 from that sale, with 10.15 of VAT reclaimed and 50 of
// purchases declared: whole pounds for the sales, their pence left for the next return.
inline constexpr char kVatReturnSaleBody[] =
    "{\"periodKey\":\"00A2\",\"vatDueSales\":30.150000,\"vatDueAcquisitions\":0.000000,\"totalVatDue\":30.150000,"
    "\"vatReclaimedCurrPeriod\":10.150000,\"netVatDue\":20.000000,\"totalValueSalesExVAT\":150,"
    "\"totalValuePurchasesExVAT\":50,\"totalValueGoodsSuppliedExVAT\":150,\"totalAcquisitionsExVAT\":0,"
    "\"finalised\":true}";
