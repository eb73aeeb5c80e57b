// The lists of the purchases side whose records the ledger side keeps (accounts/bills.h,
// accounts/billpayments.h), named here so that every program declares their date indexes when it
// opens a business (listindexes.h), below the layer that writes them.
#pragma once

#include <string_view>

inline constexpr std::string_view kBillsList = "Bills";
inline constexpr std::string_view kBillPaymentsList = "BillPayments";
