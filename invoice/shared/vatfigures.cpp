#include "invoice/shared/vatfigures.h"

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

bool Adjust(const LProfile& profile, const char* field, long long change) {
  if (change == 0) return true;
  LFileStoreListBase misc = profile.List(kMiscList);
  LRecord figures;
  misc.OpenAlways(figures, kVatReturnRecord);
  figures.SetInt64(field, figures.GetInt64(field, 0) + change);
  return figures.Flush();
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

bool FKAdjustOutputTax(const LProfile& profile, long long change) { return Adjust(profile, "OutputTax", change); }

bool FKAdjustTotalValueSalesExVat(const LProfile& profile, long long change) {
  return Adjust(profile, "TotalValueSalesExVat", change);
}

bool FKAdjustTotalValueGoodsSuppliedExVat(const LProfile& profile, long long change) {
  return Adjust(profile, "TotalValueGoodsSuppliedExVat", change);
}

bool FKAdjustVatRunningFigures(const LProfile& profile, long long taxTotalChange, long long subTotalChange) {
  if (!FKMTDforVATAvailable(profile)) return true;
  return FKAdjustOutputTax(profile, taxTotalChange) && FKAdjustTotalValueSalesExVat(profile, subTotalChange) &&
         FKAdjustTotalValueGoodsSuppliedExVat(profile, subTotalChange);
}

void FKVatReturnFromFigures(const FKVatGivenFigures& given, const FKVatRunningFigures& running,
                            FKVatReturns& vatReturn, FKVatRunningFigures& used) {
  const auto& box = given.box;
  used = {};
  if (!box[1]) used.outputTax = running.outputTax;
  if (!box[6]) used.salesExVat = running.salesExVat / 100 * 100;
  if (!box[8]) used.goodsSuppliedExVat = running.goodsSuppliedExVat / 100 * 100;
  long long box1 = box[1].value_or(running.outputTax), box2 = box[2].value_or(0);
  long long box3 = box[3].value_or(box1 + box2), box4 = box[4].value_or(0);
  long long box5 = box[5].value_or(box3 >= box4 ? box3 - box4 : box4 - box3);
  vatReturn.vatDueSales = box1 / 100.0;
  vatReturn.vatDueAcquisitions = box2 / 100.0;
  vatReturn.totalVatDue = box3 / 100.0;
  vatReturn.vatReclaimedCurrPeriod = box4 / 100.0;
  vatReturn.netVatDue = box5 / 100.0;
  vatReturn.totalValueSalesExVAT = box[6].value_or(running.salesExVat / 100);
  vatReturn.totalValuePurchasesExVAT = box[7].value_or(0);
  vatReturn.totalValueGoodsSuppliedExVAT = box[8].value_or(running.goodsSuppliedExVat / 100);
  vatReturn.totalAcquisitionsExVAT = box[9].value_or(0);
}

bool FKVatRunningFiguresTakeOut(const LProfile& profile, const FKVatRunningFigures& used) {
  return FKAdjustOutputTax(profile, -used.outputTax) && FKAdjustTotalValueSalesExVat(profile, -used.salesExVat) &&
         FKAdjustTotalValueGoodsSuppliedExVat(profile, -used.goodsSuppliedExVat);
}
