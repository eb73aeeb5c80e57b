#include "invoice/sales/porderconversion.h"

#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "accounts/porderbill.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/salesstock.h"
#include "invoice/sales/sourceclaim.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

std::string NotSavedMessage(std::string_view key) {
  return "Impossible d'enregistrer le bon de commande " + std::string(key) + ".";
}

}  // namespace

bool LPOrderConvertToBill(LProfile& profile, std::string_view key, std::string_view date, std::string& reference,
                          std::string* error) {
  // One sales change at a time; past the lock's wait, the order's own claim keeps two users
  // billing it from making two bills.
  LLedgerLock lock(profile);
  LBill bill;
  if (!LBillLoadFromPOrder(profile, key, date, bill, error)) return false;
  // The bill's reference is taken and its record file made empty before the order is claimed
  // with it: a deleted bill frees its order, one being made (the empty file) does not.
  LSalesChangeIntent intent(profile);
  const LFileStoreListBase& bills = profile.MainList(kBillsList);
  std::string taken = LBillTakeReference(profile);
  intent.NoteReserving(kBillsList);
  if (taken.empty() || !LSalesReserveKey(bills, taken)) return LFail(error, kLedgerNotWrittenMessage);
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  LSalesClaim claim{std::string(kind.recordedList), std::string(key), std::string(kPOrderBillField),
                    std::string(kBillsList), taken};
  std::string mark;
  auto billExists = [&](const std::string& billed) { return !billed.empty() && bills.TestRecordExists(billed); };
  switch (LSalesClaimSource(profile, intent, claim, billExists, mark)) {
    case LClaimResult::kClaimed: break;
    case LClaimResult::kLost:
      return LFail(error, "Le bon de commande " + std::string(key) + " a déjà été facturé (" + mark + ").");
    case LClaimResult::kNotSaved: return LFail(error, NotSavedMessage(key));
  }
  // The bill left unwritten: the number back, then the order freed.
  auto giveBack = [&](std::string_view message) {
    LBill left;
    if (bills.Open(left, taken) && left.Fields().empty()) (void)bills.Delete(taken);
    left.DetachWithoutSave();
    (void)LSalesClaimRelease(profile, claim);
    return LFail(error, message);
  };
  LSalesDocument order;
  if (!profile.MainList(kind.recordedList).Open(order, key)) return giveBack(NotSavedMessage(key));  // claimed a moment ago
  bool received = !order.GetString("ReceivedDate").empty();
  order.DetachWithoutSave();
  std::string receiveError;
  if (!received && !LPOrderReceive(profile, key, date, &receiveError)) return giveBack(receiveError);
  bill.SetString("JournalTxnRef", taken);  // posted under the reference claimed
  if (!LBillSave(profile, bill, LGetPostingUserName())) return giveBack(kLedgerNotWrittenMessage);
  reference = taken;
  return true;
}
