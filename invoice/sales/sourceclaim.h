// A document made from another is made once: an invoice from a quote or a sales order, an order
// from a quote, a bill from a purchase order, an occurrence from a recurring template. The source
// is claimed before the new document is written, under the source record's own exclusive lock, so
// that two desks making one at once, even past the ledger lock's wait (which every sales change
// may go past), meet there: the first claims, the second finds the claim and makes nothing.
//
// A conversion takes the new document's number first (an empty record file, noted as reserved in
// the sales change's intent), then reads the source's field that names what it became
// ("InvoiceNumber", "OrderNumber", "BillNumber") and, when nothing stands in it, notes the claim
// and writes the number there; a claim that loses gives its number back at once. A claim whose
// document was never written (the document refused, or the change killed between) is released:
// the mark goes, so that the source can be made into a document again; by the change itself when
// it fails, and by the settler of the sales change after a crash (LSalesClaimsSettle), which logs
// it. The empty record file is taken back as every number reserved by a killed change is.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class LFileStoreListBase;
class LProfile;
class LRecord;
class LSalesChangeIntent;

// Reads key of list under the record's exclusive lock, and saves it there once claim has changed
// it. claim returns false to leave the record as it is (the claim lost).
enum class LClaimResult {
  kClaimed,   // claim changed the record and it was saved
  kLost,      // claim declined: what it looked for was taken already
  kNotSaved,  // the record is missing or could not be written (logged)
};
LClaimResult LClaimRecord(const LFileStoreListBase& list, std::string_view key,
                          const std::function<bool(LRecord& source)>& claim);

// One conversion's claim of its source.
struct LSalesClaim {
  std::string sourceList;  // the list holding the source ("Quotes", "QuotesDrafts", "POrders", ...)
  std::string sourceKey;
  std::string field;       // the source's field naming what it became
  std::string targetList;  // the list of the document made from it
  std::string targetKey;   // its number, taken already (an empty record file)
};

// Claims: the source's field is set to the target's key, the claim noted in intent first, unless
// blocked says that the mark found there stands in the way (mark then receives it). Unless
// claimed, the number is given back.
LClaimResult LSalesClaimSource(LProfile& profile, LSalesChangeIntent& intent, const LSalesClaim& claim,
                               const std::function<bool(const std::string& mark)>& blocked, std::string& mark);

// The document of a claim was refused before anything of it was written (and its number given
// back): the source's mark goes, when it still names that document. true when it went.
bool LSalesClaimRelease(LProfile& profile, const LSalesClaim& claim);

// For the settler of an interrupted sales change (salesledger.cpp), given its notes: each claim
// whose document was never written is released, and logged.
void LSalesClaimsSettle(LProfile& profile, const std::vector<std::string>& notes);
