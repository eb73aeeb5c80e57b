// A statement line of money received posted as a customer payment: recorded, applied and
// posted by the same routine as `payment add`, paid into the bank account of the line. The
// invoices of the customer that the line's text names (their keys among its words) receive it
// in the order payments settle them; when it names none the payment is spread over the
// customer's unpaid invoices. Money paid out to a customer is recorded as a refund.
#pragma once

#include <string>
#include <string_view>

class LProfile;

// Posts line lineId of account's statement lines for customer; reference receives the ledger
// reference and paymentKey the payment's key. false with error set (nothing posted) on refusal.
[[nodiscard]] bool LBankPostCustomerPayment(LProfile& profile, std::string_view account, std::string_view lineId,
                                            std::string_view customer, std::string& reference,
                                            std::string& paymentKey, std::string& error);
