#include "invoice/sales/porderconversion.h"

#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "accounts/porderbill.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

bool LPOrderConvertToBill(LProfile& profile, std::string_view key, std::string_view date, std::string& reference,
                          std::string* error) {
  // One hold of the ledger for the whole change, so two users billing one order make one bill.
  LLedgerLock lock(profile);
  LBill bill;
  if (!LBillLoadFromPOrder(profile, key, date, bill, error)) return false;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  LSalesDocument order;
  if (!profile.List(kind.recordedList).Open(order, key)) return false;  // read a moment ago
  bool received = !order.GetString("ReceivedDate").empty();
  order.DetachWithoutSave();
  if (!received && !LPOrderReceive(profile, key, date, error)) return false;
  if (!LBillSave(profile, bill, LGetPostingUserName())) return LFail(error, kLedgerNotWrittenMessage);
  reference = bill.GetPrimaryKey();
  if (!profile.List(kind.recordedList).Open(order, key)) return true;
  order.SetString(kPOrderBillField, reference);
  if (order.Flush()) return true;
  return LFail(error, "Impossible d'enregistrer le bon de commande " + std::string(key) + ".");
}
