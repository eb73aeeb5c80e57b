#include "accounts/ledgerintent.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "accounts/auditpending.h"
#include "accounts/check.h"
#include "accounts/bookschangefile.h"
#include "accounts/audittrail.h"
#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestoreinplace.h"
#include "llib/gen/hashtable.h"
#include "llib/gen/log.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kIntentsFolder = "Intents";   // inside the ledger folder
constexpr std::string_view kIntentExtension = ".intent";
constexpr std::string_view kKindPosting = "post";
constexpr std::string_view kKindDeleting = "delete";
// The change file of one that went on without the ledger lock, and the note that its change is
// complete (balances written): only its audit entry waits.
constexpr std::string_view kUnlockedExtension = ".unlocked";
constexpr std::string_view kDoneNote = "Done";

std::string IntentsFolder(const LProfile& profile) {
  LTextBuffer ledger;
  LLegderGetBaseFolder(profile, ledger);
  return LFile::MakeFilePath(ledger, kIntentsFolder);
}

// The ledger lock file, where the holder of the lock writes the intent of its posting or deletion:
// only the holder writes there, one change at a time, so the file needs no name of its own, is
// never created or removed, and its size tells at once whether an intent is waiting.
std::string LedgerLockPath(const LProfile& profile) {
  LTextBuffer ledger;
  LLegderGetBaseFolder(profile, ledger);
  return LFile::MakeFilePath(ledger, kLedgerLockFile);
}

std::string Numbered(std::string_view name, int index) { return std::string(name) + std::to_string(index); }

// The first byte of a lock file that holds no intent. The intent is the file's first line:
// marking it ended writes one byte where cutting the file would free its block and journal the
// change, ten times the cost of a posting's other writes.
constexpr char kNoIntent = '\n';

bool MarkNoIntent(int fd) { return LRobustWriteAt(fd, &kNoIntent, 1, 0); }

// Writes text, an intent and its line end, over the start of the lock file in two writes: the
// text with the mark of no intent in place of its first character, then that character. A writer
// killed midway thus leaves the mark first, whatever an earlier and longer intent left after it
// (a write cut short keeps its start, never its end).
bool WriteIntentText(int fd, std::string& text) {
  char first = text.front();
  text.front() = kNoIntent;
  return LRobustWriteAt(fd, text.data(), text.size(), 0) && LRobustWriteAt(fd, &first, 1, 0);
}

// ---- Settling ---------------------------------------------------------------------------------

// Whether the day file holds rows, whole, at sizeBefore. A day file that grew by part of them
// (a full disk that the writer could not cut back) is cut back to sizeBefore.
bool PostingInEffect(const std::string& path, long long sizeBefore, std::string_view rows) {
  LLockedFile file = LLockedFile::OpenCurrent(path, O_RDWR, LOCK_EX, kLedgerLockTimeoutMs);
  if (!file.IsOpen()) return false;
  struct stat st;
  if (::fstat(file.Get(), &st) != 0) return false;
  long long size = st.st_size;
  if (size >= sizeBefore + static_cast<long long>(rows.size())) {
    std::string found(rows.size(), '\0');
    return ::pread(file.Get(), found.data(), found.size(), sizeBefore) == static_cast<ssize_t>(found.size()) &&
           found == rows;
  }
  if (size > sizeBefore && !LRobustTruncate(file.Get(), sizeBefore)) LLogWriteFailure("truncate", path, errno);
  return false;
}

// Sets each account of the intent to its old values, or to the old values moved by the change.
// false when a record could not be written.
bool SetBalances(const LProfile& profile, const LHashTable& intent, bool inEffect) {
  LAccountList accounts(profile);
  bool saved = true;
  for (int i = 1, n = intent.GetInt("Accounts", 0); i <= n; ++i) {
    LAccount account;
    if (!accounts.Open(account, intent.GetParm(Numbered("Account", i), ""))) continue;
    int monthIndex = intent.GetInt(Numbered("Month", i), 0);
    long long delta = inEffect ? LTextToInt64(intent.GetParm(Numbered("Delta", i), "0")) : 0;
    std::string bucket = LAccountBucketField(monthIndex);
    bool hadBucket = intent.TestFieldExists(Numbered("Bucket", i));
    long long oldBucket = LTextToInt64(intent.GetParm(Numbered("Bucket", i), "0"));
    // The intent is read back from a file: its figures add as every balance does, held, never wrapped.
    if (hadBucket || inEffect) account.SetInt64(bucket, LMoneySum(oldBucket, delta));
    else account.DeleteField(bucket);
    account.SetInt64("TotalBalance", LMoneySum(LTextToInt64(intent.GetParm(Numbered("Total", i), "0")), delta));
    bool hadFirst = intent.TestFieldExists(Numbered("First", i));
    int oldFirst = intent.GetInt(Numbered("First", i), 0);
    if (inEffect) account.SetInt("BalanceFirst", hadFirst ? std::min(oldFirst, monthIndex) : monthIndex);
    else if (hadFirst) account.SetInt("BalanceFirst", oldFirst);
    else account.DeleteField("BalanceFirst");
    account.SetBool("IsAccountUsed", inEffect || intent.GetBool(Numbered("Used", i), false));
    saved = account.Flush() && saved;
  }
  return saved;
}

// Settles the intent that text (a lock file's or an older intent file's content) holds in its
// first line; true when it is settled and may go. An intent cut short, with no line end, was never
// complete, so the change it announced never began: there is nothing to settle. whole: the change
// is known to be whole in its day file, which is not looked at. recompute: one without the lock
// may have moved the same accounts since the intent noted them, so its values would undo that
// move: the balances are recomputed from the day files instead.
bool Settle(const LProfile& profile, std::string text, bool whole = false, bool recompute = false) {
  std::size_t end = text.find(kNoIntent);
  if (end == std::string::npos || end == 0) return true;
  text.resize(end);
  LHashTable intent;
  intent.LoadHTTPString(text);
  std::string date = intent.GetParm("Date", "");
  std::string reference = intent.GetParm("Reference", "");
  LTextBuffer dayPath;
  if (!LLedgerGetCSVFilePath(profile, dayPath, date)) return true;
  bool posting = std::string_view(intent.GetParm("Kind", "")) == kKindPosting;
  bool inEffect = whole ? true : posting ? PostingInEffect(dayPath, LTextToInt64(intent.GetParm("Size", "0")), intent.GetParm("Rows", ""))
                          : !LLedgerTransactionTestExists(profile, date, reference);
  if (recompute) {
    LCheckReport report;
    LCheckFixAccountBalances(profile, report);
  } else if (!SetBalances(profile, intent, inEffect)) {
    return false;
  }
  if (!inEffect && intent.TestFieldExists("Audit") && !LAuditCutBack(profile, LTextToInt64(intent.GetParm("Audit", "0"))))
    return false;
  LLogWarning("Grand livre : %s de l'écriture %s du %s, interrompue, a été %s et les soldes des comptes remis en accord.",
              posting ? "l'enregistrement" : "la suppression", reference.c_str(), date.c_str(),
              inEffect ? "achevée" : "annulée");
  return true;
}

// Settles an intent file left by an older program, which wrote each intent to a file of its own.
bool SettleFile(const LProfile& profile, const std::string& path) {
  std::string text;
  return LFile::ReadAll(path, text) && Settle(profile, std::move(text)) && ::unlink(path.c_str()) == 0;
}

// Whether a change made without the lock is running or waits to be settled: it may have moved
// accounts while the holder's change was under way.
bool UnlockedChangeSeen(const LProfile& profile) {
  std::vector<std::string> names = LFile::ListFolder(IntentsFolder(profile));
  return std::any_of(names.begin(), names.end(), [](const std::string& name) { return name.ends_with(kUnlockedExtension); });
}

// Settles the intent held in the ledger lock file, if any, and marks it ended. Called by the
// holder of the lock, through the descriptor it locked.
bool SettleLockFile(const LProfile& profile) {
  LLedgerLockFile* held = LLedgerHeldLockFile(profile);
  if (held == nullptr || held->empty) return false;
  bool whole = held->balancesPending;
  struct stat info {};
  if (::fstat(held->fd, &info) != 0) return false;
  std::string text(static_cast<std::size_t>(info.st_size), '\0');
  ssize_t n = ::pread(held->fd, text.data(), text.size(), 0);
  if (n < 0) return false;
  text.resize(static_cast<std::size_t>(n));
  bool found = n > 0 && text.front() != kNoIntent;
  if (!Settle(profile, std::move(text), whole, UnlockedChangeSeen(profile))) return false;
  if (MarkNoIntent(held->fd)) {
    held->empty = true;
    held->balancesPending = false;
    return found;
  }
  LLogWriteFailure("write", LedgerLockPath(profile), errno);
  return false;
}

// The settler of one extension, and whether it logs what became of each change itself.
struct LSettler {
  LIntentSettler settle = nullptr;
  bool reportsEach = false;
};

struct LSettlers {
  std::mutex mutex;
  std::map<std::string, LSettler, std::less<>> byExtension;
};

LSettlers& Settlers() {
  static LSettlers settlers;
  return settlers;
}

// The settler of the change file name; none (settle null) for an extension none registered.
LSettler FindSettler(std::string_view name) {
  LSettlers& settlers = Settlers();
  std::lock_guard<std::mutex> guard(settlers.mutex);
  std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {};
  auto it = settlers.byExtension.find(name.substr(dot));
  return it == settlers.byExtension.end() ? LSettler{} : it->second;
}

enum class LChangeFileState { kLive, kAbandoned, kIdle };

// Whether the owner of a change file is gone: its lock died with it. A live owner's file stays
// locked and is left alone; one locked after its owner removed it ended normally in between. An
// empty file whose owner is gone held no change (its owner was killed between two): kIdle.
LChangeFileState StateOf(const std::string& path) {
  LFileDescriptor fd(LRobustOpen(path, O_RDONLY));
  if (!fd.IsOpen()) return LChangeFileState::kLive;
  int locked;
  do {
    locked = ::flock(fd.Get(), LOCK_EX | LOCK_NB);
  } while (locked != 0 && errno == EINTR);
  struct stat info {};
  if (locked != 0 || ::fstat(fd.Get(), &info) != 0 || info.st_nlink == 0) return LChangeFileState::kLive;
  return info.st_size == 0 ? LChangeFileState::kIdle : LChangeFileState::kAbandoned;
}

// Whether the file holds something (a change running or abandoned).
bool HasContent(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && info.st_size > 0;
}

// The complete lines of the files (a line cut short by the crash is dropped).
std::vector<std::string> NotesOf(const std::vector<std::string>& paths) {
  std::vector<std::string> notes;
  for (const std::string& path : paths) {
    std::string text;
    if (!LFile::ReadAll(path, text)) continue;
    for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
      notes.push_back(text.substr(at, end - at));
  }
  return notes;
}

// Settles the change file of one that went on without the ledger lock and is gone; true when it
// may go. Its entry is written into the trail when its change is in effect. Balances are set
// from the day files, not from the values it noted: the holder may have moved them since.
bool SettleUnlocked(const LProfile& profile, const std::string& path) {
  std::vector<std::string> notes = NotesOf({path});
  if (notes.empty()) return true;  // cut short before the intent was whole: the change never began
  bool done = notes.size() > 1 && notes.back() == kDoneNote;
  LHashTable intent;
  intent.LoadHTTPString(notes.front());
  std::string date = intent.GetParm("Date", "");
  std::string reference = intent.GetParm("Reference", "");
  LTextBuffer dayPath;
  if (!LLedgerGetCSVFilePath(profile, dayPath, date)) return true;
  bool posting = std::string_view(intent.GetParm("Kind", "")) == kKindPosting;
  bool inEffect = done || (posting ? PostingInEffect(dayPath, LTextToInt64(intent.GetParm("Size", "0")), intent.GetParm("Rows", ""))
                                   : !LLedgerTransactionTestExists(profile, date, reference));
  if (inEffect && !LAuditAppend(profile, LAuditEventOfLine(notes.front()))) return false;
  const char* what = posting ? "l'enregistrement" : "la suppression";
  if (done) {
    LLogWarning("Grand livre : %s de l'écriture %s du %s, fait sans le verrou du grand livre, a été inscrit dans la "
                "piste d'audit.", what, reference.c_str(), date.c_str());
    return true;
  }
  // Balances move only once the day file holds the change: one not in effect moved none.
  if (inEffect) {
    LCheckReport report;
    LCheckFixAccountBalances(profile, report);
  }
  LLogWarning("Grand livre : %s de l'écriture %s du %s, faite sans le verrou du grand livre et interrompue, a été %s.",
              what, reference.c_str(), date.c_str(),
              inEffect ? "achevée, inscrite dans la piste d'audit et les soldes des comptes recalculés d'après le grand livre"
                       : "annulée");
  return true;
}

}  // namespace

std::vector<std::string_view> LIntentNoteParts(std::string_view note) {
  std::vector<std::string_view> parts;
  for (std::size_t at = 0;;) {
    std::size_t tab = note.find('\t', at);
    parts.push_back(note.substr(at, tab == std::string_view::npos ? std::string_view::npos : tab - at));
    if (tab == std::string_view::npos) return parts;
    at = tab + 1;
  }
}

void LLedgerAddIntentSettler(std::string_view extension, LIntentSettler settler, bool reportsEach) {
  LSettlers& settlers = Settlers();
  std::lock_guard<std::mutex> guard(settlers.mutex);
  settlers.byExtension[std::string(extension)] = {settler, reportsEach};
}

bool LLedgerChangesRunning(const LProfile& profile, std::string_view extension) {
  std::string folder = IntentsFolder(profile);
  std::vector<std::string> names = LFile::ListFolder(folder);
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    std::string path = LFile::MakeFilePath(folder, name);
    return name.ends_with(extension) && HasContent(path) && StateOf(path) == LChangeFileState::kLive;
  });
}

std::vector<std::string> LLedgerChangesPending(const LProfile& profile, std::string_view extension) {
  std::string folder = IntentsFolder(profile);
  std::vector<std::string> paths;
  for (const std::string& name : LFile::ListFolder(folder))
    if (name.ends_with(extension)) paths.push_back(LFile::MakeFilePath(folder, name));
  return NotesOf(paths);  // the files of processes between changes are empty
}

int LLedgerSettleIntents(const LProfile& profile) {
  std::string folder = IntentsFolder(profile);
  int nSettled = SettleLockFile(profile) ? 1 : 0;
  // Abandoned change files by settler: however many a crash left, each settler runs once. The
  // audit trail's pending entries go first: they judge from the records as the crash left them,
  // which the other settlers may write again.
  std::vector<std::string> pendingAudit;
  struct LAbandoned {
    bool reportsEach = false;
    std::vector<std::string> paths;
  };
  std::map<LIntentSettler, LAbandoned> abandoned;
  for (const std::string& name : LFile::ListFolder(folder)) {
    std::string path = LFile::MakeFilePath(folder, name);
    if (name.ends_with(kIntentExtension)) {
      if (SettleFile(profile, path)) ++nSettled;
      continue;
    }
    if (name.ends_with(kUnlockedExtension)) {
      LChangeFileState state = StateOf(path);
      if (state == LChangeFileState::kLive) continue;
      bool abandoned = state == LChangeFileState::kAbandoned;
      if (abandoned && !SettleUnlocked(profile, path)) continue;  // left for the next holder
      if (::unlink(path.c_str()) != 0) LLogWriteFailure("unlink", path, errno);
      else nSettled += abandoned;
      continue;
    }
    bool audit = name.ends_with(kAuditPendingExtension);
    LSettler settler = audit ? LSettler{} : FindSettler(name);
    if (!audit && settler.settle == nullptr) continue;
    LChangeFileState state = StateOf(path);
    if (state == LChangeFileState::kIdle && ::unlink(path.c_str()) != 0) LLogWriteFailure("unlink", path, errno);
    if (state != LChangeFileState::kAbandoned) continue;
    if (audit) {
      pendingAudit.push_back(path);
      continue;
    }
    LAbandoned& files = abandoned[settler.settle];
    files.reportsEach = settler.reportsEach;
    files.paths.push_back(path);
  }
  if (!pendingAudit.empty()) {
    LAuditSettlePending(profile, NotesOf(pendingAudit));
    for (const std::string& path : pendingAudit) nSettled += ::unlink(path.c_str()) == 0;
  }
  for (const auto& [settle, files] : abandoned) {
    settle(profile, NotesOf(files.paths));
    if (!files.reportsEach)
      LLogWarning("Une modification des documents a été interrompue : les documents, leurs écritures et les soldes "
                  "qui en dépendent ont été remis en accord.");
    for (const std::string& path : files.paths) nSettled += ::unlink(path.c_str()) == 0;
  }
  return nSettled;
}

LBooksChangeIntent::LBooksChangeIntent(const LProfile& profile, std::string_view extension)
    : file_(LBooksChangeFileTake(IntentsFolder(profile), extension)) {}

bool LBooksChangeIntent::Note(std::string_view line) { return file_ != nullptr && LBooksChangeFileNote(*file_, line); }

void LBooksChangeIntent::Keep() {
  if (file_ != nullptr) LBooksChangeFileLeave(file_);
  file_ = nullptr;
}

LBooksChangeIntent::~LBooksChangeIntent() {
  if (file_ != nullptr) LBooksChangeFileGiveBack(file_);
}

bool LLedgerIntentWaits(int fd) {
  char first;
  ssize_t n = ::pread(fd, &first, 1, 0);
  return n < 0 || (n == 1 && first != kNoIntent);  // a file that cannot be read is settled by the lock's holder
}

void LLedgerSettleInterrupted(const LProfile& profile) {
  LFileDescriptor lockFile(LRobustOpen(LedgerLockPath(profile), O_RDONLY));
  bool waiting = lockFile.IsOpen() && LLedgerIntentWaits(lockFile.Get());
  lockFile.Close();
  // The change files of running processes stay in the folder, empty between their changes.
  std::string folder = IntentsFolder(profile);
  if (!waiting) {
    std::vector<std::string> names = LFile::ListFolder(folder);
    auto holds = [&](const std::string& name) { return HasContent(LFile::MakeFilePath(folder, name)); };
    if (std::none_of(names.begin(), names.end(), holds)) return;
  }
  LLedgerLock lock(profile);
}

// ---- Writing an intent ------------------------------------------------------------------------

LLedgerIntent::LLedgerIntent(const LProfile& profile) : profile_(profile) {}

LLedgerIntent::~LLedgerIntent() {
  for (LAccountMove& move : moves_) move.account.DetachWithoutSave();
  // Neither ended nor refused (balances not all written): left for the next holder of the lock.
  if (unlocked_ != nullptr) unlocked_->Keep();
}

void LLedgerIntent::AddTransaction(const LLedgerTransaction& txn, int sign) { Add(txn, sign, false); }

void LLedgerIntent::AddPosting(const LLedgerTransaction& txn) { Add(txn, +1, true); }

void LLedgerIntent::Add(const LLedgerTransaction& txn, int sign, bool holdRecords) {
  // An earlier change of this hold left balances unsaved: they are written before any is read.
  if (LLedgerLockFile* held = LLedgerHeldLockFile(profile_); held != nullptr && !held->empty && held->balancesPending)
    (void)SettleLockFile(profile_);
  LDate day;
  if (!LDate::Parse(txn.GetDate(), day)) return;  // never recorded: nothing moves
  LAccountList accounts(profile_);
  for (const auto& line : txn.Lines()) {
    auto same = [&](const LAccountMove& move) { return move.account.GetPrimaryKey() == line.account; };
    auto it = std::find_if(moves_.begin(), moves_.end(), same);
    if (it == moves_.end()) {
      LAccountMove& move = moves_.emplace_back();
      // An account's number changes only under the ledger lock (renumbering), which this holds.
      bool opened = holdRecords ? move.held.Open(accounts, line.account, move.account, LPathChange::kReplaced)
                                : accounts.Open(move.account, line.account);
      if (!opened) {
        moves_.pop_back();
        continue;
      }
      move.monthIndex = day.MonthIndex();
      it = std::prev(moves_.end());
    }
    long long held = LMoneySum(0, line.amount);  // the lowest 64-bit value has no opposite
    it->delta = LMoneySum(it->delta, sign < 0 ? -held : held);
  }
}

bool LLedgerIntent::Write(std::string_view kind, const LLedgerTransaction& txn, long long sizeBefore,
                          std::string_view rows) {
  heldFile_ = LLedgerHeldLockFile(profile_);
  entry_ = LAuditTransactionEvent(kind, txn);  // the kinds are the trail's actions
  LHashTable intent;
  intent.SetString("Kind", kind);
  intent.SetString("Date", txn.GetDate());
  intent.SetString("Reference", txn.GetReference());
  intent.SetString("Size", std::to_string(sizeBefore));
  intent.SetString("Rows", rows);
  if (heldFile_ == nullptr) {
    // The entry waits in the intent: its time and author are the change's, not its writer's.
    LAuditSetPendingFields(entry_, intent);
  } else {
    auditSize_ = LAuditLogSize(profile_);
    intent.SetString("Audit", std::to_string(auditSize_));
  }
  int i = 0;
  for (const LAccountMove& move : moves_) {
    ++i;
    const LAccount& account = move.account;
    std::string bucket = LAccountBucketField(move.monthIndex);
    intent.SetString(Numbered("Account", i), account.GetPrimaryKey());
    intent.SetString(Numbered("Month", i), std::to_string(move.monthIndex));
    intent.SetString(Numbered("Delta", i), std::to_string(move.delta));
    if (account.TestFieldExists(bucket)) intent.SetString(Numbered("Bucket", i), std::to_string(account.GetInt64(bucket, 0)));
    intent.SetString(Numbered("Total", i), std::to_string(account.GetTotalBalance()));
    if (account.TestFieldExists("BalanceFirst"))
      intent.SetString(Numbered("First", i), std::to_string(account.GetInt("BalanceFirst", 0)));
    intent.SetString(Numbered("Used", i), account.IsAccountUsed() ? "1" : "0");
  }
  intent.SetString("Accounts", std::to_string(i));
  std::string text;
  intent.SaveHTTPString(text);
  if (heldFile_ == nullptr) return WriteUnlocked(text);
  text.push_back('\n');  // the mark of a complete intent

  // The holder of the lock writes through its descriptor of the lock file.
  int fd = heldFile_->fd;
  bool written = WriteIntentText(fd, text);
  *heldFile_ = {fd, false, false};
  if (!written) {
    LLogWriteFailure("write", LedgerLockPath(profile_), errno);
    if (MarkNoIntent(fd)) heldFile_->empty = true;
    heldFile_ = nullptr;
    return false;
  }
  return true;
}

bool LLedgerIntent::WriteUnlocked(std::string_view text) {
  LLogWarning("Grand livre : verrou non obtenu en %u ms ; %s de l'écriture %s du %s se fait sans lui, son entrée de la "
              "piste d'audit sera inscrite par le prochain détenteur du verrou.",
              kLedgerLockTimeoutMs, entry_.action == kAuditPost ? "l'enregistrement" : "la suppression",
              entry_.reference.c_str(), entry_.date.c_str());
  unlocked_ = std::make_unique<LBooksChangeIntent>(profile_, kUnlockedExtension);
  if (unlocked_->Note(text)) return true;
  unlocked_.reset();  // without its intent the change would lose its entry: refused
  return false;
}

bool LLedgerIntent::BeginPosting(const LLedgerTransaction& txn, long long sizeBefore, std::string_view rows) {
  return Write(kKindPosting, txn, sizeBefore, rows);
}

bool LLedgerIntent::BeginDeleting(const LLedgerTransaction& txn) { return Write(kKindDeleting, txn, 0, {}); }

bool LLedgerIntent::RecordInTrail() { return unlocked_ != nullptr || LAuditAppend(profile_, entry_); }

bool LLedgerIntent::ApplyBalances() {
  std::optional<LAccountList> accounts;  // only for records not held
  bool saved = true;
  for (LAccountMove& move : moves_) {
    LAccount& account = move.account;
    if (unlocked_ != nullptr && !move.held.IsHolding()) {
      // Read without the ledger lock and without its own: the holder may have moved it since.
      std::string key = account.GetPrimaryKey();
      account.DetachWithoutSave();
      if (!accounts) accounts.emplace(profile_);
      if (!move.held.Open(*accounts, key, account)) {
        saved = false;
        continue;
      }
    }
    account.MoveBalance(move.monthIndex, move.delta);
    // In place: the intent rewrites these balances whole should the save be cut short.
    if (move.held.IsHolding()) {
      saved = move.held.Save(account) && saved;
      continue;
    }
    if (!accounts) accounts.emplace(profile_);
    saved = LFileStoreSaveInPlace(*accounts, account) && saved;
  }
  if (!saved && heldFile_ != nullptr) heldFile_->balancesPending = true;
  return saved;
}

void LLedgerIntent::Refuse() {
  // Without the lock nothing went into the trail, and the holder's entries may follow the end it
  // saw: the log is not touched.
  if (unlocked_ != nullptr) {
    unlocked_.reset();
    return;
  }
  if (auditSize_ >= 0 && !LAuditCutBack(profile_, auditSize_)) return;  // the intent stays to be settled
  End();
}

void LLedgerIntent::End() {
  if (unlocked_ != nullptr) {
    // Complete: only the entry waits, for the next holder. Unmarked, the change is settled as one
    // cut short, which recomputes the balances: slower, never wrong.
    (void)unlocked_->Note(kDoneNote);
    unlocked_->Keep();
    unlocked_.reset();
    return;
  }
  if (heldFile_ != nullptr) {
    if (!MarkNoIntent(heldFile_->fd)) LLogWriteFailure("write", LedgerLockPath(profile_), errno);
    else *heldFile_ = {heldFile_->fd, true, false};
  }
  heldFile_ = nullptr;
}
