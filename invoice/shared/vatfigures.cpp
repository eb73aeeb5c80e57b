#include "invoice/shared/vatfigures.h"

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

void Adjust(const LProfile& profile, const char* field, long long change) {
  if (change == 0) return;
  LFileStoreListBase misc = profile.List(kMiscList);
  LRecord figures;
  misc.OpenAlways(figures, kVatReturnRecord);
  figures.SetInt64(field, figures.GetInt64(field, 0) + change);
  misc.Save(figures);
}

}  // namespace

bool FKMTDforVATAvailable(const LProfile& profile) {
  LRecord options;
  profile.List(kMiscList).Load("Options", options);
  return !options.GetString(kVATRegistrationField).empty();
}

FKVatRunningFigures FKVatRunningFiguresLoad(const LProfile& profile) {
  LRecord record;
  profile.List(kMiscList).Load(kVatReturnRecord, record);
  FKVatRunningFigures figures;
  figures.outputTax = record.GetInt64("OutputTax", 0);
  figures.salesExVat = record.GetInt64("TotalValueSalesExVat", 0);
  figures.goodsSuppliedExVat = record.GetInt64("TotalValueGoodsSuppliedExVat", 0);
  return figures;
}

void FKAdjustOutputTax(const LProfile& profile, long long change) { Adjust(profile, "OutputTax", change); }

void FKAdjustTotalValueSalesExVat(const LProfile& profile, long long change) {
  Adjust(profile, "TotalValueSalesExVat", change);
}

void FKAdjustTotalValueGoodsSuppliedExVat(const LProfile& profile, long long change) {
  Adjust(profile, "TotalValueGoodsSuppliedExVat", change);
}

void FKAdjustVatRunningFigures(const LProfile& profile, long long taxTotalChange, long long subTotalChange) {
  if (!FKMTDforVATAvailable(profile)) return;
  FKAdjustOutputTax(profile, taxTotalChange);
  FKAdjustTotalValueSalesExVat(profile, subTotalChange);
  FKAdjustTotalValueGoodsSuppliedExVat(profile, subTotalChange);
}
