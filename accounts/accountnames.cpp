// The lookups of accounts.h that name an account by description or ask whether it is live,
// answered from a per-process copy of each chart's descriptions: postings make several of them
// per line, and reading the whole accounts folder for each (one open, lock, read and close per
// account) was most of the cost of recording an invoice.
//
// The copy is read whole once per business; afterwards a lookup costs one stat of the folder
// (llib/gen/filestamp.h). That is enough because every change of a description or of "Deleted"
// is a save, which renames a new file into the folder, and every account created, renamed or
// removed changes the folder's entries: either gives the folder a new change time. The ledger's
// balance writes in place (llib/gen/filestoreinplace.h) leave the folder alone, and rightly: they
// write only the fields the posting changed, never a description or "Deleted".
//
// One mutex guards the copies (the web server's threads share them); it is held while a folder is
// read, and no lock is taken under it but the account files' own, one at a time.
#include <map>
#include <mutex>

#include "accounts/accounts.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestamp.h"

namespace {

struct LChartNames {
  LFileStamp folderStamp;                          // the accounts folder when it was read
  std::map<std::string, std::string> firstNumber;  // description -> lowest number bearing it
  std::map<std::string, bool, std::less<>> live;   // number -> not "Deleted"
};

std::mutex namesMutex;
std::map<std::string, LChartNames>& Charts() {
  static auto* charts = new std::map<std::string, LChartNames>;  // outlives every static user
  return *charts;
}

void ReadChart(const LProfile& profile, LChartNames& names) {
  names.firstNumber.clear();
  names.live.clear();
  LAccountList list(profile);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(list); it.IsValid(); it.Next()) {
    std::string number = it->GetPrimaryKey();
    names.live[number] = !it->IsDeleted();
    auto [found, added] = names.firstNumber.emplace(it->GetDescription(), number);
    if (!added && number < found->second) found->second = number;  // number order, not the folder's
  }
}

// Runs use on the chart's names, read again first unless the folder is unchanged since they were.
template <class Use>
auto WithChart(const LProfile& profile, const Use& use) {
  std::string folder = LFile::MakeFilePath(profile.GetDataStore().GetFolder(), kAccountsList);
  std::lock_guard<std::mutex> guard(namesMutex);
  LChartNames& names = Charts()[folder];
  LFileStamp now = LFileStampOf(folder);
  if (!LFileStampStillHolds(names.folderStamp, now)) {
    names.folderStamp = now;  // taken before reading: a change meanwhile shows at the next look
    ReadChart(profile, names);
  }
  return use(names);
}

}  // namespace

std::string LGetAccountNumberUsingDescription(const LProfile& profile, std::string_view description) {
  return WithChart(profile, [&](const LChartNames& names) {
    auto found = names.firstNumber.find(std::string(description));
    return found == names.firstNumber.end() ? std::string() : found->second;
  });
}

bool LAccountIsLive(const LProfile& profile, std::string_view number) {
  if (number.empty()) return false;
  return WithChart(profile, [&](const LChartNames& names) {
    auto found = names.live.find(number);
    return found != names.live.end() && found->second;
  });
}
