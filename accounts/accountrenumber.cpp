#include "accounts/accountrenumber.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/banklines.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"

namespace {

// Rewrites the rows of one day file that name the old number; the other rows keep their text.
// The file stays locked (exclusively) from the read until its new text, written beside it, is
// renamed over it. Returns the rows changed, or -1 when the new text could not be written (the
// file is then unchanged).
long RenumberDayFile(const std::string& path, const LAccountRenumberProcess& data) {
  LLockedFile file = LLockedFile::OpenCurrent(path, O_RDWR, LOCK_EX, kLedgerLockTimeoutMs);
  if (!file.IsOpen()) return 0;
  // Our own exclusive lock stands in for the reader's shared one: it tries once and goes on.
  LCSVFileReader reader(path, 0);
  std::string content;
  long nChanged = 0;
  LLedgerJournalLine line;
  for (; reader.HasRow(); reader.Next()) {
    line.LoadFromCSVRow(reader.GetLine());
    if (line.account == data.oldNumber) {
      line.account = data.newNumber;
      content += line.BuildCSVRow();
      ++nChanged;
    } else {
      content += reader.GetLine();
      content += "\r\n";
    }
  }
  reader.Close();
  if (nChanged == 0) return 0;
  return LFile::WriteAllAtomic(path, content) ? nChanged : -1;
}

bool RenumberBills(const LProfile& profile, const LAccountRenumberProcess& data) {
  for (std::string_view listName : {kBillsList, kBillsDraftsList}) {
    LFileStoreListBase list = profile.List(listName);
    LBill bill;
    for (LFileStoreIteratorBase it(list, bill); bill.IsAttached(); it.Next(bill)) {
      if (bill.GetString("DepositAccount") == data.oldNumber) bill.SetString("DepositAccount", data.newNumber);
      for (int line = 1; line <= bill.GetItemCount(); ++line) {
        char field[32];
        std::snprintf(field, sizeof field, "Item%dAccount", line);
        if (bill.GetString(field) == data.oldNumber) bill.SetString(field, data.newNumber);
      }
      if (!bill.Flush()) return false;
    }
  }
  return true;
}

bool RenumberOptions(const LProfile& profile, const LAccountRenumberProcess& data) {
  LOptions options;
  options.OpenFrom(profile);
  for (int slot = 1; slot <= kDefAccountSlots; ++slot)
    if (options.GetDefAccountNumber(profile, slot) == data.oldNumber) options.SetDefAccountNumber(slot, data.newNumber);
  if (options.GetString("LastAccountJournalApplied") == data.oldNumber)
    options.SetString("LastAccountJournalApplied", data.newNumber);
  return options.Flush();
}

}  // namespace

LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data) {
  LProfile& profile = *data.profile;
  LLedgerLock lock(profile);
  process.SetStatus("Modifier le numéro de compte", 0);
  // The trail announces the renumbering before any file changes; without it nothing changes.
  if (!LAuditAppend(profile, {std::string(kAuditRenumber), data.oldNumber + " -> " + data.newNumber, {}, 0, {}, {}, {}})) {
    process.SetError(std::string(kAuditNotWrittenMessage));
    return kProcessFailed;
  }

  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  std::vector<std::string> names = LFile::ListFolder(folder);
  std::sort(names.begin(), names.end());
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    if (name.size() < 5 || name.compare(name.size() - 4, 4, ".csv") != 0) continue;
    long nChanged = RenumberDayFile(LFile::MakeFilePath(folder, name), data);
    if (nChanged < 0) {
      process.SetError(kRenumberFailedMessage);
      return kProcessFailed;
    }
    data.nRowsChanged += nChanged;
    if (nChanged > 0) ++data.nDayFilesChanged;
    process.SetProgress(static_cast<double>(i + 1) / static_cast<double>(names.size()));
  }

  LTextBuffer oldReconcile, newReconcile;
  LReconcileGetCSVFilePath(profile, oldReconcile, data.oldNumber);
  LReconcileGetCSVFilePath(profile, newReconcile, data.newNumber);
  if (LFile::Exists(oldReconcile) && !LFile::Exists(newReconcile) && !LRobustRename(oldReconcile, newReconcile)) {
    LLogWriteFailure("rename", oldReconcile, errno);
    process.SetError(kRenumberFailedMessage);
    return kProcessFailed;
  }
  if (!LBankLinesRenumber(profile, data.oldNumber, data.newNumber)) {
    process.SetError(kRenumberFailedMessage);
    return kProcessFailed;
  }

  if (!RenumberOptions(profile, data) || !RenumberBills(profile, data)) {
    process.SetError(kRenumberFailedMessage);
    return kProcessFailed;
  }

  LAccountList accounts(profile);
  LAccount account;
  if (!accounts.Open(account, data.oldNumber)) return kProcessFinished;
  account.SetPrimaryKey(data.newNumber);
  bool saved = account.Flush();
  process.SetProgress(1.0);
  if (!saved || account.GetStoredKey() != data.newNumber) {
    process.SetError(kRenumberFailedMessage);
    return kProcessFailed;
  }
  return kProcessFinished;
}
