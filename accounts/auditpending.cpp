#include "accounts/auditpending.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

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

// The "Seq" of the first entry after offset size of event (its action, reference and lines), and
// whether a "cancel" of it follows; 0 when there is none.
long long FindEntry(const LProfile& profile, long long size, const LAuditEvent& event, bool& cancelled) {
  std::string text = LAuditReadFrom(profile, size);
  long long seq = 0;
  cancelled = false;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find('\n', at);
    if (end == std::string::npos) break;  // a line cut short was never an entry
    std::string_view entry = std::string_view(text).substr(at, end - at);
    at = end + 1;
    if (LAuditField(entry, "Reference") != event.reference) continue;
    std::string lines = LAuditField(entry, "Lines");
    std::string action = LAuditField(entry, "Action");
    if (seq == 0 && action == event.action && lines == event.lines) seq = LTextToInt64(LAuditField(entry, "Seq"));
    else if (seq != 0 && action == kAuditCancel && lines == std::to_string(seq)) cancelled = true;
  }
  return seq;
}

// The rule of auditpending.h over one note; warn: the change was cut short, and what is done is
// said in the program's log.
void Settle(const LProfile& profile, std::string_view text, bool warn) {
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
    long long seq = LAuditCancelWritten(profile, size, event);
    if (seq > 0 && warn)
      LLogWarning("Piste d'audit : « %s » de %s n'a pas eu lieu ; l'entrée %lld est annulée par une entrée « cancel ».",
                  event.action.c_str(), event.reference.c_str(), seq);
    return;
  }
  bool cancelled = false;
  if (FindEntry(profile, size, event, cancelled) != 0 || !LAuditAppend(profile, event)) return;
  if (warn)
    LLogWarning("Piste d'audit : l'entrée « %s » de %s, %s, a été inscrite.", event.action.c_str(),
                event.reference.c_str(),
                LAuditField(text, "Unlocked") == "1" ? "faite sans le verrou du grand livre"
                                                     : "interrompue avant d'être écrite");
}

}  // namespace

LAuditPending::LAuditPending(const LProfile& profile, LAuditEvent event, std::string recordPath)
    : profile_(profile), intent_(profile, kAuditPendingExtension) {
  LHashTable note;
  LAuditSetPendingFields(event, note);
  note.SetString("Path", recordPath);
  note.SetString("Before", Fingerprint(recordPath));
  note.SetString("Log", std::to_string(LAuditLogSize(profile)));
  bool unlocked = LLedgerHeldLockFile(profile) == nullptr;
  if (unlocked) note.SetString("Unlocked", "1");
  note.SaveHTTPString(note_);
  event_ = std::move(event);
  // A failure is logged and only loses the crash protection; without the lock, the entry is then
  // written at once under the log's own lock.
  pending_ = intent_.Note(note_) && unlocked;
}

LAuditPending::~LAuditPending() {
  if (pending_) intent_.Keep();
  else Settle(profile_, note_, false);
}

bool LAuditPending::Append() { return pending_ || LAuditAppend(profile_, event_); }

long long LAuditCancelWritten(const LProfile& profile, long long size, const LAuditEvent& event) {
  bool cancelled = false;
  long long seq = FindEntry(profile, size, event, cancelled);
  if (seq == 0 || cancelled) return 0;
  LAuditEvent cancel = event;
  cancel.action = kAuditCancel;
  cancel.lines = std::to_string(seq);
  cancel.time.clear();
  cancel.user.clear();
  return LAuditAppend(profile, cancel) ? seq : -1;
}

void LAuditSetPendingFields(LAuditEvent& event, LHashTable& fields) {
  if (event.time.empty()) event.time = LAuditTimeNow();
  if (event.user.empty()) event.user = LGetPostingUserName();
  LAuditSetEventFields(event, fields);
}

void LAuditSettlePending(const LProfile& profile, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) Settle(profile, note, true);
}
