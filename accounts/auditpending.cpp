#include "accounts/auditpending.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "accounts/ledgerlock.h"
#include "llib/gen/hashtable.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"
#include "llib/gen/textnum.h"

namespace {

// "-" for a missing file; otherwise its inode, size and time of change.
std::string Fingerprint(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return "-";
  return std::to_string(info.st_ino) + ":" + std::to_string(info.st_size) + ":" + std::to_string(info.st_mtim.tv_sec) +
         "." + std::to_string(info.st_mtim.tv_nsec);
}

bool IsEmptyFile(const std::string& fingerprint) {
  std::size_t colon = fingerprint.find(':');
  return colon != std::string::npos && fingerprint.compare(colon, 3, ":0:") == 0;
}

// No document: no file, or a number taken (an empty file).
bool HoldsNothing(const std::string& fingerprint) { return fingerprint == "-" || IsEmptyFile(fingerprint); }

// The trail's entries from an offset on, read once for all the notes settled together and read on
// from where they ended when the settling writes more. A change of many entries re-reading the
// log from each of its notes read it again and again: 50 million entries for 10,000 invoices.
class LTrailAfter {
 public:
  LTrailAfter(const LProfile& profile, long long from) : profile_(profile), end_(from) { ReadOn(); }

  // The "Seq" of the first entry of event (its action, reference and lines) at or after offset
  // size, and whether a "cancel" of it follows; 0 when there is none.
  long long Find(long long size, const LAuditEvent& event, bool& cancelled) {
    if (stale_) ReadOn();
    cancelled = false;
    auto found = entries_.find(Key(event.reference, event.action, event.lines));
    if (found == entries_.end()) return 0;
    const std::vector<LPlace>& places = found->second;
    auto first = std::lower_bound(places.begin(), places.end(), size,
                                  [](const LPlace& place, long long offset) { return place.offset < offset; });
    first = std::find_if(first, places.end(), [](const LPlace& place) { return place.seq != 0; });
    if (first == places.end()) return 0;
    auto cancels = entries_.find(Key(event.reference, kAuditCancel, std::to_string(first->seq)));
    cancelled = cancels != entries_.end() && cancels->second.back().offset > first->offset;
    return first->seq;
  }
  // The settling wrote an entry: the next Find reads it.
  void Wrote() { stale_ = true; }

 private:
  struct LPlace {
    long long offset;  // where the entry begins in the log
    long long seq;
  };
  // Unambiguous whatever bytes the fields hold.
  static std::string Key(std::string_view reference, std::string_view action, std::string_view lines) {
    return std::to_string(reference.size()) + ":" + std::string(reference) + std::to_string(action.size()) + ":" +
           std::string(action) + std::string(lines);
  }
  void ReadOn() {
    stale_ = false;
    std::string text = LAuditReadFrom(profile_, end_);
    std::size_t at = 0;
    for (std::size_t lineEnd; (lineEnd = text.find('\n', at)) != std::string::npos; at = lineEnd + 1) {
      std::string_view entry = std::string_view(text).substr(at, lineEnd - at);
      entries_[Key(LAuditField(entry, "Reference"), LAuditField(entry, "Action"), LAuditField(entry, "Lines"))].push_back(
          {end_ + static_cast<long long>(at), LTextToInt64(LAuditField(entry, "Seq"))});
    }
    end_ += static_cast<long long>(at);  // a line cut short was never an entry
  }

  const LProfile& profile_;
  long long end_;  // where the entries read end
  bool stale_ = false;
  std::unordered_map<std::string, std::vector<LPlace>> entries_;  // by event, in the log's order
};

long long CancelWritten(const LProfile& profile, LTrailAfter& trail, long long size, const LAuditEvent& event) {
  bool cancelled = false;
  long long seq = trail.Find(size, event, cancelled);
  if (seq == 0 || cancelled) return 0;
  LAuditEvent cancel = event;
  cancel.action = kAuditCancel;
  cancel.lines = std::to_string(seq);
  cancel.time.clear();
  cancel.user.clear();
  bool written = LAuditAppend(profile, cancel);
  trail.Wrote();
  return written ? seq : -1;
}

// The rule of auditpending.h over one note; warn: the change was cut short, and what is done is
// said in the program's log.
void Settle(const LProfile& profile, LTrailAfter& trail, std::string_view text, bool warn) {
  LAuditEvent event = LAuditEventOfLine(text);
  std::string path = LAuditField(text, "Path");
  std::string before = LAuditField(text, "Before");
  std::string now = Fingerprint(path);
  long long size = LTextToInt64(LAuditField(text, "Log"));
  bool changed = now != before;
  if (HoldsNothing(before) && HoldsNothing(now)) {
    changed = false;  // a number taken for a document never written goes back
    if (now != "-" && ::unlink(path.c_str()) != 0) LLogWriteFailure("unlink", path, errno);
  }
  if (!changed) {
    long long seq = CancelWritten(profile, trail, size, event);
    if (seq > 0 && warn)
      LLogWarning("Piste d'audit : « %s » de %s n'a pas eu lieu ; l'entrée %lld est annulée par une entrée « cancel ».",
                  event.action.c_str(), event.reference.c_str(), seq);
    return;
  }
  bool cancelled = false;
  if (trail.Find(size, event, cancelled) != 0) return;
  bool written = LAuditAppend(profile, event);
  trail.Wrote();
  if (written && warn)
    LLogWarning("Piste d'audit : l'entrée « %s » de %s, %s, a été inscrite.", event.action.c_str(),
                event.reference.c_str(),
                LAuditField(text, "Unlocked") == "1" ? "faite sans le verrou du grand livre"
                                                     : "interrompue avant d'être écrite");
}

// Settles the notes in turn over one read of the log from the earliest place they name.
void SettleAll(const LProfile& profile, const std::vector<std::string_view>& notes, bool warn) {
  if (notes.empty()) return;
  long long from = std::numeric_limits<long long>::max();
  for (std::string_view note : notes) from = std::min(from, LTextToInt64(LAuditField(note, "Log")));
  LTrailAfter trail(profile, from);
  for (std::string_view note : notes) Settle(profile, trail, note, warn);
}

}  // namespace

LAuditPending::LAuditPending(const LProfile& profile, std::string recordPath)
    : profile_(profile), recordPath_(std::move(recordPath)), intent_(profile, kAuditPendingExtension) {}

LAuditPending::LAuditPending(const LProfile& profile, LAuditEvent event, std::string recordPath)
    : LAuditPending(profile, std::move(recordPath)) {
  Note(std::move(event));
}

void LAuditPending::Note(LAuditEvent event) {
  LHashTable note;
  LAuditSetPendingFields(event, note);
  note.SetString("Path", recordPath_);
  note.SetString("Before", Fingerprint(recordPath_));
  note.SetString("Log", std::to_string(LAuditLogSize(profile_)));
  bool unlocked = LLedgerHeldLockFile(profile_) == nullptr;
  if (unlocked) note.SetString("Unlocked", "1");
  LNoted& noted = noted_.emplace_back();
  note.SaveHTTPString(noted.note);
  noted.event = std::move(event);
  // A failure is logged and only loses the crash protection; without the lock, the entry is then
  // written at once under the log's own lock.
  noted.left = intent_.Note(noted.note) && unlocked;
}

LAuditPending::~LAuditPending() {
  std::vector<std::string_view> now;
  bool left = false;
  for (const LNoted& noted : noted_) {
    if (noted.left) left = true;
    else now.push_back(noted.note);
  }
  SettleAll(profile_, now, false);
  if (left) intent_.Keep();
}

bool LAuditPending::Append() { return noted_.empty() || noted_.back().left || LAuditAppend(profile_, noted_.back().event); }

bool LAuditPending::Add(LAuditEvent event) {
  Note(std::move(event));
  return Append();
}

long long LAuditCancelWritten(const LProfile& profile, long long size, const LAuditEvent& event) {
  LTrailAfter trail(profile, size);
  return CancelWritten(profile, trail, size, event);
}

void LAuditSetPendingFields(LAuditEvent& event, LHashTable& fields) {
  if (event.time.empty()) event.time = LAuditTimeNow();
  if (event.user.empty()) event.user = LGetPostingUserName();
  LAuditSetEventFields(event, fields);
}

void LAuditSettlePending(const LProfile& profile, const std::vector<std::string>& notes) {
  SettleAll(profile, std::vector<std::string_view>(notes.begin(), notes.end()), true);
}
