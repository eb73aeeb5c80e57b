// Renaming a tax: documents name their taxes by name ("Item<n>TaxName", "ShippingTaxName"), so
// a tax renamed in the tax options is renamed in every document that uses it.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/process.h"

class LFileStoreListBase;
class LProfile;

// Rewrites every "Item<n>TaxName" equal to oldName in the records of list; returns how many
// records changed.
int ChangeTaxNameInList(const LFileStoreListBase& list, std::string_view oldName, std::string_view newName);
// The same for "ShippingTaxName".
int ChangeShippingTaxNameInList(const LFileStoreListBase& list, std::string_view oldName, std::string_view newName);

struct LChangeTaxNameData {
  LProfile* profile = nullptr;
  std::string oldName;
  std::string newName;
  int changedRecords = 0;  // out: records rewritten
};

// Renames the tax in the line and shipping tax names of every recorded, draft and recurring
// invoice, quote, order, credit note and purchase order. Names that differ from the old one
// only partly (a combined name holding it) are left alone. Stops between lists when asked.
LProcessResult ProcessChangeTaxName(LProcessInterface& process, LChangeTaxNameData& data);
