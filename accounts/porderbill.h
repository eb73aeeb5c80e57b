// A purchase order becomes a bill when the goods and the supplier's invoice arrive. The bill takes
// the order's supplier and lines, and the notes "Bon de commande N": each line keeps its item, description, quantity and unit
// price (a line with a discount comes as one unit at its net amount), on the supplier's default
// expense account ("ExpenseAccount", when it is a live account) or else the business's (linked
// slot 9); shipping comes as one more line on the shipping-paid account (linked slot 8); the tax
// amounts of the order go to the taxes of the same names (the default tax for a name the tax
// options do not know). The bill remembers its order in "POrderNumber" (its goods came into stock
// with the order's receipt, not with the bill) and the order its bill in "BillNumber".
#pragma once

#include <string>
#include <string_view>

class LBill;
class LProfile;

// The field of a purchase order that names the bill made from it.
inline constexpr std::string_view kPOrderBillField = "BillNumber";

// Fills bill (a new, detached record) from the recorded purchase order key, dated date. false
// with a French message in *error (may be null) when the order is missing or a draft, was billed
// already, or no expense account can take its lines; bill is then unspecified.
bool LBillLoadFromPOrder(LProfile& profile, std::string_view key, std::string_view date, LBill& bill,
                         std::string* error);
