// The running figures of the next VAT return, kept up to date by the invoice totaller while
// electronic VAT submission is in use (the business has a VAT registration number): the output
// tax (box 1), the sales excluding VAT (box 6) and the goods supplied excluding VAT (box 8, moved
// by the same change as box 6). They are stored in minor units in the record "VATReturn" of the
// list "Misc": "OutputTax", "TotalValueSalesExVat", "TotalValueGoodsSuppliedExVat". A successful
// submission takes out what it declared (vat submit), so sales recorded afterwards count toward
// the next return.
#pragma once

class LProfile;

inline constexpr const char* kVatReturnRecord = "VATReturn";

struct FKVatRunningFigures {
  long long outputTax = 0;           // minor units
  long long salesExVat = 0;
  long long goodsSuppliedExVat = 0;
};

// true when the business has a VAT registration number.
bool FKMTDforVATAvailable(const LProfile& profile);

FKVatRunningFigures FKVatRunningFiguresLoad(const LProfile& profile);

// Each adds change (minor units) to its figure.
void FKAdjustOutputTax(const LProfile& profile, long long change);
void FKAdjustTotalValueSalesExVat(const LProfile& profile, long long change);
void FKAdjustTotalValueGoodsSuppliedExVat(const LProfile& profile, long long change);

// What the totaller calls when a recorded invoice's total changed: when submission is in use,
// the output tax by the change of the tax total and both sales figures by the change of the
// sub-total.
void FKAdjustVatRunningFigures(const LProfile& profile, long long taxTotalChange, long long subTotalChange);
