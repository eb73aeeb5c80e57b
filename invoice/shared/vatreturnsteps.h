// The steps of the UK VAT return that the desk's `kontavo vat` commands and the web pages of the
// VAT return take alike: the settings (VAT registration number, the tax authority's API address),
// the choice of a period among the stored obligations, and the submission of a return from the
// figures given and the running ones.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/vatfigures.h"

class LProcessInterface;

inline constexpr std::string_view kVatSettingNotStored = "Impossible d'enregistrer le réglage.";
// Added to HMRC's acceptance when the declared figures could not be taken out of the running ones.
inline constexpr std::string_view kVatFiguresNotTakenOutMessage =
    "La déclaration a été acceptée, mais les chiffres déclarés n'ont pas pu être retirés des chiffres en cours : "
    "corrigez-les avant la prochaine déclaration.";

// Stores what is given: the business's VAT registration number; the API base address of the
// user's configuration ("sandbox" and "production" name HMRC's hosts). false, nothing stored,
// with a French message for an address that does not read or a setting that cannot be written.
[[nodiscard]] bool FKVatConfigure(LProfile& profile, const std::optional<std::string>& vrn, const std::optional<std::string>& api,
                    std::string& error);
// The business's VAT registration number.
std::string FKVatRegistrationNumber(LProfile& profile);
// true when an access token is stored.
bool FKMTDforVATAuthorized();

// The stored obligations that are fulfilled (viewing) or open (submitting), as stored.
std::vector<std::unique_ptr<LVATObligation>> FKVatObligationsWithStatus(LProfile& profile, bool fulfilled);
// Checks the period chosen for submission (fulfilled false) or viewing (true): false with the
// refusal "Empty period key", "No open obligations found" / "No fulfilled obligations found" or
// that no such stored period has the wanted status.
[[nodiscard]] bool FKVatChoosePeriod(LProfile& profile, std::string_view periodKey, bool fulfilled, std::string& refusal);

// The return a submission of periodKey would send: the given boxes, the others from the running
// figures (FKVatReturnFromFigures).
FKVatReturns FKVatReturnToSubmit(LProfile& profile, std::string_view periodKey, const FKVatGivenFigures& given);
// Submits the return of the open period periodKey and, once HMRC accepted it, takes what it
// declared of the running figures out of them. alert: the outcome as FKMTDforVATDlg words it (the
// period's refusal with an empty caption when the period cannot be chosen; after an acceptance whose
// figures could not be taken out, kVatFiguresNotTakenOutMessage ends its message); receipt (when
// given) the service's answer body.
[[nodiscard]] bool FKVatSubmitReturn(LProfile& profile, LProcessInterface& process, std::string_view periodKey,
                       const FKVatGivenFigures& given, FKVatAlert& alert, std::string* receipt);
