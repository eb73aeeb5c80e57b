#include "accounts/audittrail.h"

#include <fcntl.h>
#include <openssl/sha.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <mutex>
#include <unordered_set>

#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/hashtable.h"
#include "llib/gen/hextext.h"
#include "llib/gen/log.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/percent.h"
#include "llib/gen/processid.h"
#include "llib/gen/record.h"
#include "llib/gen/system.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::size_t kTailChunk = 4096;  // the last line is looked for this many bytes at a time

std::string LogPath(const LProfile& profile) {
  return LFile::MakeFilePath(profile.GetDataStore().GetFolder(), kAuditTrailFile);
}

std::string HeadPath(const LProfile& profile) {
  return LFile::MakeFilePath(profile.GetDataStore().GetFolder(), kAuditTrailHeadFile);
}

// "7 9f86d0...\n": the head of a chain whose last entry is number seq with that text.
std::string HeadText(long long seq, std::string_view lastLine) {
  return std::to_string(seq) + " " + LAuditHash(lastLine) + "\n";
}

}  // namespace

std::string LAuditTimeNow() {
  std::time_t now = std::time(nullptr);
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

namespace {

// The last line of the open log without its line end; empty for an empty log. false when the
// file cannot be read.
bool ReadLastLine(int fd, std::string& line) {
  struct stat info {};
  if (::fstat(fd, &info) != 0) return false;
  off_t end = info.st_size;
  line.clear();
  if (end == 0) return true;
  std::string tail;
  off_t from = end;
  while (from > 0) {
    std::size_t size = static_cast<std::size_t>(std::min<off_t>(from, kTailChunk));
    from -= static_cast<off_t>(size);
    std::string chunk(size, '\0');
    if (::pread(fd, chunk.data(), size, from) != static_cast<ssize_t>(size)) return false;
    tail.insert(0, chunk);
    std::size_t lineEnd = tail.size();
    if (tail.back() == '\n') --lineEnd;
    std::size_t lineStart = tail.rfind('\n', lineEnd == 0 ? 0 : lineEnd - 1);
    if (lineStart != std::string::npos && lineStart < lineEnd) {
      line = tail.substr(lineStart + 1, lineEnd - lineStart - 1);
      return true;
    }
  }
  line = tail.back() == '\n' ? tail.substr(0, tail.size() - 1) : tail;
  return true;
}

// Cuts off the end of the log after its last line end. A writer killed in the middle of its
// entry can leave part of it (a write is cut between pages): chained to, that torn line would
// give the next entry no order number to follow. Only one who alone writes the log calls it.
bool CutTornTail(int fd, const std::string& path) {
  struct stat info {};
  if (::fstat(fd, &info) != 0) return false;
  off_t keep = info.st_size;
  if (keep == 0) return true;  // a new log: nothing torn
  char chunk[kTailChunk];
  for (bool torn = false; keep > 0;) {
    off_t from = std::max<off_t>(0, keep - static_cast<off_t>(kTailChunk));
    std::size_t size = static_cast<std::size_t>(keep - from);
    if (::pread(fd, chunk, size, from) != static_cast<ssize_t>(size)) return false;
    std::string_view text(chunk, size);
    if (!torn && text.back() == '\n') return true;
    torn = true;
    std::size_t lineEnd = text.rfind('\n');
    keep = lineEnd == std::string_view::npos ? from : from + static_cast<off_t>(lineEnd) + 1;
    if (lineEnd != std::string_view::npos) break;
  }
  if (!LRobustTruncate(fd, keep)) {
    LLogWriteFailure("truncate", path, errno);
    return false;
  }
  LLogWarning("Piste d'audit : une entrée inachevée de %lld octets, laissée par un programme interrompu, a été retirée.",
              static_cast<long long>(info.st_size - keep));
  return true;
}

// The value of a field in an entry line, still percent-encoded (hashes and numbers need none).
std::string_view RawField(std::string_view line, std::string_view name) {
  for (std::size_t at = 0; at < line.size();) {
    std::size_t end = line.find('&', at);
    if (end == std::string_view::npos) end = line.size();
    std::string_view pair = line.substr(at, end - at);
    if (pair.size() > name.size() && pair.substr(0, name.size()) == name && pair[name.size()] == '=')
      return pair.substr(name.size() + 1);
    at = end + 1;
  }
  return {};
}

}  // namespace

void LAuditSetEventFields(const LAuditEvent& event, LHashTable& fields) {
  fields.SetString("Action", event.action);
  fields.SetString("Reference", event.reference);
  fields.SetString("Date", event.date);
  fields.SetString("Amount", std::to_string(event.amount));
  fields.SetString("Lines", event.lines);
  fields.SetString("Time", event.time);
  fields.SetString("User", event.user);
}

std::string LAuditField(std::string_view line, std::string_view name) { return LPercentDecode(RawField(line, name)); }

LAuditEvent LAuditEventOfLine(std::string_view line) {
  LAuditEvent event;
  event.action = LAuditField(line, "Action");
  event.reference = LAuditField(line, "Reference");
  event.date = LAuditField(line, "Date");
  event.amount = LTextToInt64(RawField(line, "Amount"));
  event.lines = LAuditField(line, "Lines");
  event.time = LAuditField(line, "Time");
  event.user = LAuditField(line, "User");
  return event;
}

std::string LAuditHash(std::string_view text) {
  unsigned char digest[SHA256_DIGEST_LENGTH];
  ::SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest);
  return LHexText(std::string_view(reinterpret_cast<const char*>(digest), sizeof digest));
}

namespace {

// Writes the head of a chain whose last entry is lastLine (none: the head is emptied), in place:
// one short write, then the end cut, so that it never reads empty.
bool WriteHead(const LProfile& profile, std::string_view lastLine) {
  std::string head = lastLine.empty() ? std::string() : HeadText(LTextToInt64(RawField(lastLine, "Seq")), lastLine);
  std::string path = HeadPath(profile);
  LFileDescriptor file(LRobustOpen(path, O_WRONLY | O_CREAT, 0666));
  bool written = file.IsOpen() && LRobustWrite(file.Get(), head.data(), head.size()) &&
                 LRobustTruncate(file.Get(), static_cast<off_t>(head.size()));
  if (!written) LLogWriteFailure("write", path, errno);
  return written;
}

// Cuts the open log back to size and the head back to the entry then last; what is already so
// is left untouched.
bool CutBack(const LProfile& profile, int fd, long long size) {
  struct stat info {};
  if (::fstat(fd, &info) != 0) return false;
  if (info.st_size > size && !LRobustTruncate(fd, static_cast<off_t>(size))) {
    LLogWriteFailure("truncate", LogPath(profile), errno);
    return false;
  }
  std::string last, head;
  if (!ReadLastLine(fd, last)) return false;
  LFile::ReadAll(HeadPath(profile), head);  // a missing head reads empty
  return head == (last.empty() ? std::string() : HeadText(LTextToInt64(RawField(last, "Seq")), last)) ||
         WriteHead(profile, last);
}

// The end of the log as this process last wrote or read it, so that a posting does not open the
// log and its head and read the last line back each time. Used only by a holder of the ledger
// lock: every writer of the trail holds it, and a log whose file, or whose size, is no longer
// what was noted was changed by another process since, and is read again.
//
// A size equal to the one noted means the same content: entries before the end are only ever
// taken off by the process whose change they record (LAuditCutBack, which drops this note), or by
// whoever settles that change after the process died.
struct LAuditEnd {
  std::mutex mutex;
  std::string path;  // the log's; empty: nothing noted
  pid_t pid = 0;     // a forked child reads the log anew
  LFileDescriptor log, head;
  dev_t logDevice = 0, headDevice = 0;
  ino_t logInode = 0, headInode = 0;
  long long size = 0;          // of the log
  long long headSize = -1;     // as last written here; -1: unknown
  std::string last;            // the log's last line
  // The ledger-lock hold during which a look at the log found it as noted (LAuditLogSize): the
  // entry that follows in that hold needs no second look. 0: none.
  unsigned long long seenInHold = 0;
};

LAuditEnd& NotedEnd() {
  static LAuditEnd end;
  return end;
}

void ForgetEnd(LAuditEnd& end) {
  end.path.clear();
  end.seenInHold = 0;
  end.log.Close();
  end.head.Close();
}

}  // namespace

void LAuditLetGoOfFiles() {
  LAuditEnd& end = NotedEnd();
  std::lock_guard<std::mutex> guard(end.mutex);
  ForgetEnd(end);
}

long long LAuditLogSize(const LProfile& profile) {
  std::string path = LogPath(profile);
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return 0;
  if (unsigned long long hold = LLedgerHoldNumber(profile); hold != 0) {
    LAuditEnd& end = NotedEnd();
    std::lock_guard<std::mutex> guard(end.mutex);
    bool asNoted = end.path == path && end.pid == LProcessId() && info.st_dev == end.logDevice &&
                   info.st_ino == end.logInode && info.st_size == end.size;
    end.seenInHold = asNoted ? hold : 0;
  }
  return static_cast<long long>(info.st_size);
}

std::string LAuditReadFrom(const LProfile& profile, long long size) {
  LFileDescriptor log(LRobustOpen(LogPath(profile), O_RDONLY));
  struct stat info {};
  if (!log.IsOpen() || ::fstat(log.Get(), &info) != 0 || info.st_size <= size) return {};
  std::string text(static_cast<std::size_t>(info.st_size - size), '\0');
  ssize_t got = ::pread(log.Get(), text.data(), text.size(), static_cast<off_t>(size));
  text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return text;
}

bool LAuditCutBack(const LProfile& profile, long long size) {
  LLedgerLock ledgerLock(profile);
  LAuditLetGoOfFiles();  // the end is read again after the cut
  std::string path = LogPath(profile);
  if (!LFile::Exists(path)) return true;
  LLockedFile log(path, O_RDWR, LOCK_EX, kLedgerLockTimeoutMs);
  struct stat info {};
  if (!log.IsOpen() || ::fstat(log.Get(), &info) != 0) return false;
  return info.st_size <= size || CutBack(profile, log.Get(), size);
}

namespace {

// Brings the noted end in step with the log of profile, opening the files when they are not the
// ones noted. false when the log cannot be read.
bool CatchUp(const LProfile& profile, LAuditEnd& end) {
  std::string path = LogPath(profile);
  unsigned long long hold = LLedgerHoldNumber(profile);
  if (hold != 0 && end.seenInHold == hold && end.path == path && end.pid == LProcessId()) return true;
  struct stat info {};
  bool same = end.path == path && end.pid == LProcessId() && ::stat(path.c_str(), &info) == 0 &&
              info.st_dev == end.logDevice && info.st_ino == end.logInode;
  if (same && info.st_size == end.size) return true;
  end.headSize = -1;  // another process wrote the trail since: its head may be longer
  if (!same) {
    ForgetEnd(end);
    end.log = LFileDescriptor(LRobustOpen(path, O_RDWR | O_CREAT | O_APPEND, 0666));
    if (!end.log.IsOpen() || ::fstat(end.log.Get(), &info) != 0) return false;
    end.path = path;
    end.pid = LProcessId();
    end.logDevice = info.st_dev;
    end.logInode = info.st_ino;
  }
  if (!CutTornTail(end.log.Get(), path) || ::fstat(end.log.Get(), &info) != 0) {
    ForgetEnd(end);
    return false;
  }
  end.size = info.st_size;
  if (ReadLastLine(end.log.Get(), end.last)) return true;
  ForgetEnd(end);
  return false;
}

// Writes the head through the noted descriptor, opened again when the path names another file.
bool WriteNotedHead(const LProfile& profile, LAuditEnd& end, std::string_view lastLine) {
  std::string head = HeadText(LTextToInt64(RawField(lastLine, "Seq")), lastLine);
  std::string path = HeadPath(profile);
  struct stat info {};
  if (!end.head.IsOpen() || ::stat(path.c_str(), &info) != 0 || info.st_dev != end.headDevice ||
      info.st_ino != end.headInode) {
    end.head = LFileDescriptor(LRobustOpen(path, O_WRONLY | O_CREAT, 0666));
    if (!end.head.IsOpen() || ::fstat(end.head.Get(), &info) != 0) {
      LLogWriteFailure("open", path, errno);
      end.head.Close();
      return false;
    }
    end.headDevice = info.st_dev;
    end.headInode = info.st_ino;
    end.headSize = -1;
  }
  // Heads only grow while this process writes them alone; the end is cut when it may be longer.
  bool written = LRobustWriteAt(end.head.Get(), head.data(), head.size(), 0) &&
                 (end.headSize >= 0 && end.headSize <= static_cast<long long>(head.size())
                      ? true
                      : LRobustTruncate(end.head.Get(), static_cast<off_t>(head.size())));
  end.headSize = written ? static_cast<long long>(head.size()) : -1;
  if (!written) LLogWriteFailure("write", path, errno);
  return written;
}

std::string EntryText(const LAuditEvent& event, const std::string& last) {
  long long seq = last.empty() ? 1 : LTextToInt64(RawField(last, "Seq")) + 1;
  LHashTable entry;
  LAuditSetEventFields(event, entry);
  if (event.time.empty()) entry.SetString("Time", LAuditTimeNow());
  if (event.user.empty()) entry.SetString("User", LGetPostingUserName());
  entry.SetString("Seq", std::to_string(seq));
  entry.SetString("Prev", last.empty() ? std::string(kAuditFirstPrev) : LAuditHash(last));
  std::string text;
  entry.SaveHTTPString(text);
  return text;
}

void LogRefused(const LAuditEvent& event) {
  LLogError("Piste d'audit : impossible d'inscrire %s de %s ; la modification est refusée.", event.action.c_str(),
            event.reference.c_str());
}

// The holder of the ledger lock appends through the noted end of the log.
bool AppendAtNotedEnd(const LProfile& profile, const LAuditEvent& event) {
  LAuditEnd& end = NotedEnd();
  std::lock_guard<std::mutex> guard(end.mutex);
  if (!CatchUp(profile, end)) {
    LogRefused(event);
    return false;
  }
  std::string line = EntryText(event, end.last);
  std::string text = line + '\n';
  // The head follows the log; an entry whose head could not follow is taken back off, so that a
  // refused change leaves the trail as it was.
  bool appended = LRobustWrite(end.log.Get(), text.data(), text.size());
  if (!appended) LLogWriteFailure("write", end.path, errno);
  if (appended && WriteNotedHead(profile, end, line)) {
    end.size += static_cast<long long>(text.size());
    end.last = std::move(line);
    return true;
  }
  (void)CutBack(profile, end.log.Get(), end.size);
  ForgetEnd(end);
  LogRefused(event);
  return false;
}

}  // namespace

bool LAuditAppend(const LProfile& profile, const LAuditEvent& event) {
  LLedgerLock ledgerLock(profile);
  if (ledgerLock.Locked()) return AppendAtNotedEnd(profile, event);
  // Past the wait for the ledger lock, the log's own lock keeps two writers apart.
  LLockedFile log(LogPath(profile), O_RDWR | O_CREAT | O_APPEND, LOCK_EX, kLedgerLockTimeoutMs, 0666);
  std::string last;
  struct stat info {};
  if (!log.IsOpen() || !CutTornTail(log.Get(), LogPath(profile)) || !ReadLastLine(log.Get(), last) ||
      ::fstat(log.Get(), &info) != 0) {
    LogRefused(event);
    return false;
  }
  std::string line = EntryText(event, last);
  std::string text = line + '\n';
  bool appended = LRobustWrite(log.Get(), text.data(), text.size());
  if (!appended) LLogWriteFailure("write", LogPath(profile), errno);
  if (appended && WriteHead(profile, line)) return true;
  (void)CutBack(profile, log.Get(), info.st_size);
  LogRefused(event);
  return false;
}

LAuditEvent LAuditTransactionEvent(std::string_view action, const LLedgerTransaction& txn) {
  LAuditEvent event;
  event.action = action;
  event.reference = txn.GetReference();
  event.date = txn.GetDate();
  for (const auto& line : txn.Lines()) {
    if (line.amount > 0) event.amount = LMoneySum(event.amount, line.amount);
    event.lines += line.BuildCSVRow();
  }
  return event;
}

bool LAuditAppendDocument(const LProfile& profile, std::string_view action, std::string_view title,
                          std::string_view key, const LRecord& document) {
  return LAuditAppend(profile, LAuditDocumentEvent(action, title, key, document));
}

LAuditEvent LAuditDocumentEvent(std::string_view action, std::string_view title, std::string_view key,
                                const LRecord& document) {
  LAuditEvent event;
  event.action = action;
  event.reference = std::string(title) + " " + std::string(key);
  event.date = document.GetString("Date");
  event.amount = document.GetInt64(document.TestFieldExists("Total") ? "Total" : "Amount", 0);
  if (action == kAuditDeleteDocument) {
    LHashTable fields;
    for (const auto& field : document.Fields())
      if (!field.deleted) fields.SetString(field.name, field.text);
    fields.SaveHTTPString(event.lines);
  }
  return event;
}

std::string LAuditTransactionKey(std::string_view date, std::string_view reference) {
  std::string key(date);
  key += '\t';
  for (char c : reference) key += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return key;
}

std::unordered_map<std::string, std::string> LAuditPostingDays(const LProfile& profile) {
  std::unordered_map<std::string, std::string> days;
  std::string content;
  if (!LFile::ReadAll(LogPath(profile), content)) return days;
  for (std::size_t at = 0; at < content.size();) {
    std::size_t end = content.find('\n', at);
    if (end == std::string::npos) end = content.size();
    std::string_view line(content.data() + at, end - at);
    at = end + 1;
    std::string_view action = RawField(line, "Action");
    if (action != kAuditPost && action != kAuditDelete) continue;
    std::string key = LAuditTransactionKey(LAuditField(line, "Date"), LAuditField(line, "Reference"));
    if (action == kAuditDelete) days.erase(key);
    else days[key] = std::string(RawField(line, "Time").substr(0, 10));
  }
  return days;
}

LAuditVerifyResult LAuditVerifyText(std::string_view content, std::string_view head) {
  LAuditVerifyResult result;
  std::string_view previous;
  for (std::size_t at = 0; at < content.size();) {
    std::size_t end = content.find('\n', at);
    if (end == std::string_view::npos) end = content.size();
    std::string_view line = content.substr(at, end - at);
    at = end + 1;
    long long number = ++result.entryCount;
    std::string expectedPrev = number == 1 ? std::string(kAuditFirstPrev) : LAuditHash(previous);
    std::string_view seq = RawField(line, "Seq");
    if (seq != std::to_string(number)) {
      result.brokenEntry = number;
      result.message = "Piste d'audit rompue à l'entrée " + std::to_string(number) + " : numéro d'ordre « " +
                       std::string(seq.substr(0, 20)) + " » au lieu de " + std::to_string(number) +
                       " (entrée supprimée, déplacée ou modifiée).";
      return result;
    }
    if (RawField(line, "Prev") != expectedPrev) {
      result.brokenEntry = number;
      result.message = "Piste d'audit rompue à l'entrée " + std::to_string(number) +
                       " : son empreinte de l'entrée précédente ne correspond pas (entrée " +
                       std::to_string(number - 1) + " ou " + std::to_string(number) + " modifiée).";
      return result;
    }
    previous = line;
  }
  std::string expectedHead = result.entryCount == 0 ? std::string() : HeadText(result.entryCount, previous);
  if (head != expectedHead) {
    result.brokenEntry = result.entryCount;
    result.message = result.entryCount == 0
                         ? std::string("Piste d'audit rompue : le journal est vide alors que sa tête existe.")
                         : "Piste d'audit rompue à l'entrée " + std::to_string(result.entryCount) +
                               " : la dernière entrée ne correspond pas à la tête de la piste (entrée modifiée, "
                               "ou entrées suivantes supprimées).";
  }
  return result;
}

LAuditVerifyResult LAuditVerify(const LProfile& profile) {
  std::string content, head;
  std::string path = LogPath(profile);
  if (!LFile::Exists(path) && !LFile::Exists(HeadPath(profile))) return {};
  LFile::ReadAll(HeadPath(profile), head);  // a missing head reads empty and breaks a non-empty chain
  if (LFile::Exists(path) && !LFile::ReadAll(path, content)) {
    LAuditVerifyResult result;
    result.brokenEntry = 1;
    result.message = "Impossible de lire la piste d'audit " + path + ".";
    return result;
  }
  return LAuditVerifyText(content, head);
}

bool LAuditSaysDeleted(const LProfile& profile, std::string_view title, std::string_view key) {
  std::string log = LAuditReadFrom(profile, 0);
  std::string reference = std::string(title) + " " + std::string(key);
  std::unordered_set<std::string_view> cancelled;  // "Seq" of the entries taken back, met later in the log
  for (std::size_t end = log.size(); end > 0;) {
    std::size_t start = log.rfind('\n', end - 1 - (log[end - 1] == '\n' ? 1 : 0));
    start = start == std::string::npos ? 0 : start + 1;
    std::string_view line = std::string_view(log).substr(start, end - start);
    end = start;
    std::string_view action = RawField(line, "Action");
    if (action == kAuditCancel) {
      cancelled.insert(RawField(line, "Lines"));
      continue;
    }
    if (LAuditField(line, "Reference") != reference || cancelled.contains(RawField(line, "Seq"))) continue;
    if (action == kAuditRecord || action == kAuditEdit || action == kAuditDeleteDocument)
      return action == kAuditDeleteDocument;
  }
  return false;
}
