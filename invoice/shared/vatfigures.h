// The running figures of the next VAT return, kept up to date by the invoice totaller while
// electronic VAT submission is in use (the business has a VAT registration number): the output
// tax (box 1), the sales excluding VAT (box 6) and the goods supplied excluding VAT (box 8, moved
// by the same change as box 6). They are stored in minor units in the record "VATReturn" of the
// list "Misc": "OutputTax", "TotalValueSalesExVat", "TotalValueGoodsSuppliedExVat". A successful
// submission takes out what it declared (vat submit), so sales recorded afterwards count toward
// the next return.
#pragma once

#include <optional>

class LProfile;
struct FKVatReturns;

inline constexpr const char* kVatReturnRecord = "VATReturn";

struct FKVatRunningFigures {
  long long outputTax = 0;           // minor units
  long long salesExVat = 0;
  long long goodsSuppliedExVat = 0;
};

// true when the business has a VAT registration number.
bool FKMTDforVATAvailable(const LProfile& profile);

FKVatRunningFigures FKVatRunningFiguresLoad(const LProfile& profile);

// Each adds change (minor units) to its figure; false when the record could not be written.
[[nodiscard]] bool FKAdjustOutputTax(const LProfile& profile, long long change);
[[nodiscard]] bool FKAdjustTotalValueSalesExVat(const LProfile& profile, long long change);
[[nodiscard]] bool FKAdjustTotalValueGoodsSuppliedExVat(const LProfile& profile, long long change);

// The boxes of a return as the user gives them; an absent box takes its default.
struct FKVatGivenFigures {
  std::optional<long long> box[10];  // box[1] to box[5] in pence, box[6] to box[9] in whole pounds
};

// The return to submit: each given box as given; otherwise box 1 the running output tax, box 3 =
// box 1 + box 2, box 5 = |box 3 - box 4|, box 6 and box 8 the running sales figures in whole
// pounds (pence dropped), the others 0. used receives what was taken from the running figures
// (box 6 and 8 as whole pounds in pence), to be taken out once the return is accepted.
void FKVatReturnFromFigures(const FKVatGivenFigures& given, const FKVatRunningFigures& running,
                            FKVatReturns& vatReturn, FKVatRunningFigures& used);
// After an accepted submission: takes used out of the running figures, so that sales recorded
// meanwhile count toward the next return. false when the figures could not be written.
[[nodiscard]] bool FKVatRunningFiguresTakeOut(const LProfile& profile, const FKVatRunningFigures& used);

// What the totaller calls when a recorded invoice's total changed: when submission is in use,
// the output tax by the change of the tax total and both sales figures by the change of the
// sub-total. false when the figures could not be written.
[[nodiscard]] bool FKAdjustVatRunningFigures(const LProfile& profile, long long taxTotalChange, long long subTotalChange);
