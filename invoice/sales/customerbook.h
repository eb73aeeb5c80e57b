// Removing a customer: only a customer that no document names may go, so that every invoice,
// payment and report keeps the customer it speaks of.
#pragma once

#include <string>
#include <string_view>

class LProfile;

// What names the customer key (exactly, as documents store it): the first document found, as
// "la facture 12" or "le paiement 3", empty when none. Looks at the recorded and draft invoices,
// credit notes, orders and quotes, the payments and the recurring invoices and orders.
std::string LCustomerFirstUse(LProfile& profile, std::string_view key);

// Deletes the customer key. false with a French message in *error (when given) when it does
// not exist, when a document names it, or when the record cannot be removed.
[[nodiscard]] bool LCustomerDelete(LProfile& profile, std::string_view key, std::string* error);
