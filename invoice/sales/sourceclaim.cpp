#include "invoice/sales/sourceclaim.h"

#include "invoice/sales/salesledger.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreinplace.h"
#include "llib/gen/log.h"

namespace {

// The note of a claim: "claim", then the source's list, key and field, then the target's list and
// key.
constexpr std::string_view kClaimNote = "claim";

// Whether the target of a claim holds a document: a missing or empty record file was never
// written.
bool TargetWritten(LProfile& profile, const LSalesClaim& claim) {
  LRecord target;
  bool written = profile.MainList(claim.targetList).Open(target, claim.targetKey) && !target.Fields().empty();
  target.DetachWithoutSave();
  return written;
}

}  // namespace

LClaimResult LClaimRecord(const LFileStoreListBase& list, std::string_view key,
                          const std::function<bool(LRecord& source)>& claim) {
  LFileStoreInPlaceUpdate update;
  LRecord source;
  if (!update.Open(list, key, source)) return LClaimResult::kNotSaved;
  if (!claim(source)) {
    source.DetachWithoutSave();
    return LClaimResult::kLost;  // the lock goes with update, nothing written
  }
  return update.Save(source) ? LClaimResult::kClaimed : LClaimResult::kNotSaved;
}

LClaimResult LSalesClaimSource(LProfile& profile, LSalesChangeIntent& intent, const LSalesClaim& claim,
                               const std::function<bool(const std::string& mark)>& blocked, std::string& mark) {
  LClaimResult result = LClaimRecord(profile.MainList(claim.sourceList), claim.sourceKey, [&](LRecord& source) {
    // A mark naming the very number just taken names a document deleted before it was taken: it
    // stands in no one's way.
    std::string found = source.GetString(claim.field);
    if (found != claim.targetKey && blocked(found)) {
      mark = found;
      return false;
    }
    // Noted by the winner alone, before its mark is saved: a claim that lost leaves the settler
    // nothing, not even a number it gave back and another document may take.
    (void)intent.Note(std::string(kClaimNote) + "\t" + claim.sourceList + "\t" + claim.sourceKey + "\t" +
                      claim.field + "\t" + claim.targetList + "\t" + claim.targetKey);
    source.SetString(claim.field, claim.targetKey);
    return true;
  });
  if (result != LClaimResult::kClaimed) (void)profile.MainList(claim.targetList).Delete(claim.targetKey);  // the number goes back
  return result;
}

bool LSalesClaimRelease(LProfile& profile, const LSalesClaim& claim) {
  LClaimResult result = LClaimRecord(profile.MainList(claim.sourceList), claim.sourceKey, [&](LRecord& source) {
    if (source.GetString(claim.field) != claim.targetKey) return false;  // moved on, or claimed by another since
    source.DeleteField(claim.field);
    return true;
  });
  return result == LClaimResult::kClaimed;
}

void LSalesClaimsSettle(LProfile& profile, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts.size() != 6 || parts[0] != kClaimNote) continue;
    LSalesClaim claim{std::string(parts[1]), std::string(parts[2]), std::string(parts[3]), std::string(parts[4]),
                      std::string(parts[5])};
    if (TargetWritten(profile, claim)) continue;
    if (LSalesClaimRelease(profile, claim))
      LLogWarning("%s %s : sa conversion, interrompue avant que %s %s soit écrit, a été annulée ; il peut être converti "
                  "de nouveau.",
                  claim.sourceList.c_str(), claim.sourceKey.c_str(), claim.targetList.c_str(), claim.targetKey.c_str());
  }
}
