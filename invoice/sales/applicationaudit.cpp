#include "invoice/sales/applicationaudit.h"

#include <utility>

#include "accounts/ledgerlock.h"

#include "invoice/shared/payment.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/record.h"

namespace {

std::map<std::string, long long> Held(const LRecord& applier) {
  std::map<std::string, long long> held;
  for (const LAppliedAmount& entry : LReadAppliedAmounts(applier)) held[entry.invoice] += entry.amount;
  return held;
}

}  // namespace

LApplicationAudit::LApplicationAudit(const LProfile& profile, std::string_view title, const LRecord& applier,
                                     std::string recordPath)
    : profile_(profile),
      reference_(std::string(title) + " " + applier.GetPrimaryKey()),
      recordPath_(std::move(recordPath)),
      before_(Held(applier)) {}

bool LApplicationAudit::Write(const LRecord& applier) {
  std::map<std::string, long long> after = Held(applier);
  std::map<std::string, long long> moves;  // invoice: what it takes (above 0) or gives back
  for (const auto& [invoice, amount] : after) moves[invoice] += amount;
  for (const auto& [invoice, amount] : before_) moves[invoice] -= amount;
  std::string_view invoiceTitle = LSalesDocumentKindOf(LSalesDocumentType::kInvoice).title;
  for (const auto& [invoice, moved] : moves) {
    if (moved == 0) continue;
    LAuditEvent event;
    event.action = moved > 0 ? kAuditApply : kAuditUnapply;
    event.reference = reference_;
    event.date = applier.GetString("Date");
    event.amount = moved > 0 ? moved : -moved;
    auto now = after.find(invoice);
    event.lines = std::string(invoiceTitle) + " " + invoice + "=" + std::to_string(now == after.end() ? 0 : now->second);
    if (!pending_) pending_.emplace(profile_, recordPath_);
    if (!pending_->Add(std::move(event))) return false;
  }
  before_ = std::move(after);
  return true;
}

bool LAuditDeletionEntry(const LProfile& profile, std::string_view title, std::string_view key, const LRecord& document,
                         std::string recordPath, std::optional<LAuditPending>& pending) {
  if (LLedgerHeldLockFile(profile) != nullptr) return LAuditAppendDocument(profile, kAuditDeleteDocument, title, key, document);
  pending.emplace(profile, LAuditDocumentEvent(kAuditDeleteDocument, title, key, document), std::move(recordPath));
  return pending->Append();
}
