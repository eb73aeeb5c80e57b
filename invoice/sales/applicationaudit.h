// The audit trail's entries for payments, refunds and credit notes applied to invoices. Each
// invoice whose share of an applier changes gets one entry in the applier's name:
//
//   Action     "apply" (the invoice holds more of it), "unapply" (less, or nothing)
//   Reference  the applier ("Paiement 3", "Avoir 2"), Date its date
//   Amount     what the invoice took, or gave back (cents, above 0)
//   Lines      "Facture 12=5000": the invoice and what it now holds of the applier
//
// The entries are written before the applier's record is saved, so that a trail that cannot be
// written refuses the change; each is noted first (accounts/auditpending.h), so that a crash
// between the entries and the save is followed by "cancel" entries, and a save whose entries were
// not all written has them written by the next holder of the ledger lock.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "accounts/auditpending.h"

class LProfile;
class LRecord;

class LApplicationAudit {
 public:
  // Takes what applier (a payment or a credit note, stored in recordPath, named title in the
  // trail) holds now. Callers hold the ledger lock for the life of the object.
  LApplicationAudit(const LProfile& profile, std::string_view title, const LRecord& applier, std::string recordPath);
  LApplicationAudit(const LApplicationAudit&) = delete;
  LApplicationAudit& operator=(const LApplicationAudit&) = delete;

  // Writes an entry for every invoice whose share of the applier, as it now stands in memory, is
  // not what it was; call before saving it. false when the trail could not be written: the
  // applier must not be saved.
  [[nodiscard]] bool Write(const LRecord& applier);

 private:
  const LProfile& profile_;
  std::string reference_;
  std::string recordPath_;
  std::map<std::string, long long> before_;  // invoice key: amount held
  std::optional<LAuditPending> pending_;    // every entry's note, kept to the end of the change
};

// Writes the "delete-document" entry of document (named title and key in the trail, stored in
// recordPath) before anything of its deletion is done; false when the trail refuses it, and the
// deletion must not begin. Without the ledger lock the trail's end is only the holder's to know:
// the entry is noted in pending instead, which the caller keeps until the deletion is over, and
// the next holder writes it once the record is gone (accounts/auditpending.h).
[[nodiscard]] bool LAuditDeletionEntry(const LProfile& profile, std::string_view title, std::string_view key,
                                       const LRecord& document, std::string recordPath,
                                       std::optional<LAuditPending>& pending);
