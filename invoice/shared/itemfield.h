// The fields of a record's numbered lines. Documents, bills, cheques and transaction templates
// keep the values of line n in fields "Item<n><Name>" ("Item1Qty", "Item3Account"), lines
// numbered from 1, with their number in "ItemCount".
#pragma once

#include <string>
#include <string_view>

// The name of the field: LItemField(1, "Qty") == "Item1Qty".
std::string LItemField(int line, std::string_view name);
