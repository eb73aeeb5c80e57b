// Invoices recorded, edited and deleted and payments recorded by the real binary, killed at random
// moments: afterwards, with no repair command, `kontavo check` finds every account balance equal
// to the journal and every customer balance equal to the documents, and says what it settled;
// every invoice and payment has exactly its posting, no posting is left without its document, and
// the audit trail's chain holds.
#include <signal.h>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "invoice/sales/salesposting.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/hashtable.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

using LPosting = std::pair<std::string, std::string>;  // date, reference

class CrashCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
  }
  // The keys of the recorded invoices now.
  std::vector<std::string> InvoiceKeys() const {
    std::vector<std::string> keys;
    for (const std::string& name : LFile::ListFolder(home_.SharedFolder() + "/Invoices"))
      if (name.ends_with(".dat")) keys.push_back(name.substr(0, name.size() - 4));
    return keys;
  }
  static std::vector<std::string> Invoice(int n) {
    return {"invoice", "new", "--customer", "C1", "--date", "2026-01-05", "--line",
            "|x|" + std::to_string(1 + n % 4) + "|12.50|Aucun|"};
  }
  static std::vector<std::string> Edit(const std::string& key, int n) {
    return {"invoice", "edit", key, "--customer", "C1", "--date", "2026-01-0" + std::to_string(1 + n % 9),
            "--line", "|x|" + std::to_string(2 + n % 5) + "|7.25|Aucun|"};
  }
  static std::vector<std::string> Delete(const std::string& key) { return {"invoice", "delete", key}; }
  static std::vector<std::string> Payment() {
    return {"payment", "add", "--customer", "C1", "--amount", "20", "--date", "2026-01-06", "--auto"};
  }
  // Records a first invoice; how long that took (0 when it failed), so that the kills fall all
  // over a recording.
  static long long FirstInvoiceUs() {
    auto start = std::chrono::steady_clock::now();
    if (LRunKontavo(Invoice(0)).exitCode != 0) return 0;
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
  }
  // Runs the commands all at once, killed after a random part of spanUs; counts the kills and the
  // changes left midway.
  void RunKilled(const std::vector<std::vector<std::string>>& commands, long long spanUs, std::mt19937& random,
                 int& nKilled, int& nLeft) const {
    std::vector<std::unique_ptr<LChildProcess>> runs;
    for (const auto& args : commands) runs.push_back(std::make_unique<LChildProcess>(KONTAVO_BIN, args));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (spanUs + 1)));
    for (auto& run : runs) ::kill(run->Pid(), SIGKILL);
    for (auto& run : runs) nKilled += run->Wait() == 128 + SIGKILL;
    nLeft += static_cast<int>(LFile::ListFolder(home_.SharedFolder() + "/Ledger/Intents").size()) +
             !LReadFile(home_.SharedFolder() + "/Ledger/Ledger.lock").empty();
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

// What the audit trail says of each document now: its last entry among "record", "edit" and
// "delete-document" that no "cancel" took back, by reference ("Facture 3").
std::map<std::string, LHashTable> LastDocumentEntries(const std::string& log) {
  std::vector<LHashTable> entries;
  std::set<std::string> cancelled;  // "Seq" of the entries taken back
  for (std::size_t at = 0, end; (end = log.find('\n', at)) != std::string::npos; at = end + 1) {
    LHashTable& entry = entries.emplace_back();
    entry.LoadHTTPString(log.substr(at, end - at));
    if (std::string_view(entry.GetString("Action", "")) == "cancel") cancelled.insert(entry.GetString("Lines", ""));
  }
  std::map<std::string, LHashTable> last;
  for (const LHashTable& entry : entries) {
    std::string_view action = entry.GetString("Action", "");
    if ((action == "record" || action == "edit" || action == "delete-document") &&
        !cancelled.contains(entry.GetString("Seq", "")))
      last[entry.GetString("Reference", "")] = entry;
  }
  return last;
}

// Every document of list stands in the trail as recorded or edited with its amount, and every
// other document the trail names is deleted.
void ExpectTrailAgrees(LProfile& profile, const std::string& log, std::string_view list, const std::string& title,
                       std::string_view amountField) {
  std::map<std::string, LHashTable> last = LastDocumentEntries(log);
  LRecord document;
  for (LFileStoreIteratorBase it(profile.MainList(list), document); document.IsAttached(); it.Next(document)) {
    std::string reference = title + " " + document.GetPrimaryKey();
    auto found = last.find(reference);
    if (found == last.end()) {
      ADD_FAILURE() << reference << " is in the books but not in the audit trail";
      continue;
    }
    EXPECT_NE(std::string_view(found->second.GetString("Action", "")), "delete-document") << reference;
    EXPECT_EQ(found->second.GetString("Amount", ""), std::to_string(document.GetInt64(amountField, 0))) << reference;
    last.erase(found);
  }
  for (const auto& [reference, entry] : last) {
    if (!reference.starts_with(title + " ") || reference.find(' ', title.size() + 1) != std::string::npos) continue;
    EXPECT_EQ(std::string_view(entry.GetString("Action", "")), "delete-document")
        << reference << " is in the audit trail but not in the books";
  }
}

// Every recorded document of list has its reference and the ledger holds exactly the transaction
// its posting builds; returns their places.
std::set<LPosting> ExpectPostedAsBuilt(LProfile& profile, std::string_view list) {
  std::set<LPosting> places;
  LSalesDocument document;
  for (LFileStoreIteratorBase it(profile.MainList(list), document); document.IsAttached(); it.Next(document)) {
    std::string reference = document.GetString("JournalTxnRef");
    EXPECT_FALSE(reference.empty()) << list << " " << document.GetPrimaryKey() << " was never posted";
    LLedgerTransaction built, posted;
    if (list == kPaymentsList) LPaymentBuildTransaction(profile, document, reference, "", built);
    else LSalesDocumentBuildTransaction(profile, document, false, document.GetDate(), reference, "", built);
    EXPECT_TRUE(LLedgerTransactionLoad(profile, posted, document.GetDate(), reference));
    EXPECT_TRUE(LLedgerTransactionEqual(posted, built)) << list << " " << document.GetPrimaryKey();
    places.insert({document.GetDate(), reference});
  }
  document.Invalidate();
  return places;
}

TEST_F(CrashCli, KilledSalesChangesLeaveDocumentsAndPostingsTheNextCommandBringsInStep) {
  using Clock = std::chrono::steady_clock;
  long long runUs = FirstInvoiceUs();
  ASSERT_GT(runUs, 0);

  std::mt19937 random(25);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  std::string lockFile = home_.SharedFolder() + "/Ledger/Ledger.lock";  // holds a posting's intent
  int nLeft = 0, nKilled = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(120);
  for (int round = 0; round < 150 && Clock::now() < deadline; ++round) {
    std::vector<std::string> keys = InvoiceKeys();
    std::vector<std::vector<std::string>> commands{Invoice(round), Payment()};
    if (keys.size() > 1) {
      commands.push_back(Edit(keys[random() % keys.size()], round));
      if (round % 2 == 0) commands.push_back(Delete(keys[random() % keys.size()]));
    }
    RunKilled(commands, runUs, random, nKilled, nLeft);
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no recording was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  EXPECT_EQ(LReadFile(lockFile), "");
  // Nothing was left to repair: a second check is silent.
  LRunResult again = LRunKontavo({"check"});
  EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
  EXPECT_EQ(again.err.find("interrompue"), std::string::npos) << again.err;
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;

  // The documents and the ledger agree both ways.
  LProfile profile(home_.SharedFolder());
  std::set<LPosting> invoices = ExpectPostedAsBuilt(profile, "Invoices");
  std::set<LPosting> payments = ExpectPostedAsBuilt(profile, kPaymentsList);
  EXPECT_GT(invoices.size(), 1u);
  std::set<LPosting> sales, receipts;
  LLedgerAccountLineIterator it(profile, "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.line.type == kTxnTypeSales) sales.insert({it.line.date, it.line.reference});
    if (it.line.type == kTxnTypeReceipt) receipts.insert({it.line.date, it.line.reference});
  }
  EXPECT_EQ(sales, invoices);
  EXPECT_EQ(receipts, payments);
}

// The same kills, looked at from the audit trail: whatever moment a recording, an edit, a
// deletion or a payment was killed at, the trail ends saying what the documents show, and no
// repair command is needed for it.
TEST_F(CrashCli, KilledDocumentChangesLeaveTheAuditTrailSayingWhatTheBooksShow) {
  using Clock = std::chrono::steady_clock;
  long long runUs = FirstInvoiceUs();
  ASSERT_GT(runUs, 0);

  std::mt19937 random(17);
  int nLeft = 0, nKilled = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(90);
  for (int round = 0; round < 120 && Clock::now() < deadline; ++round) {
    std::vector<std::string> keys = InvoiceKeys();
    std::vector<std::vector<std::string>> commands{Invoice(round)};
    commands.push_back(round % 3 == 0 ? std::vector<std::string>{"payment", "delete", "1"} : Payment());
    if (!keys.empty()) commands.push_back(Edit(keys[random() % keys.size()], round));
    if (keys.size() > 2 && round % 4 == 1) commands.push_back(Delete(keys[random() % keys.size()]));
    // The commands take the ledger lock one after the other: the kills spread over them all.
    RunKilled(commands, runUs * static_cast<long long>(commands.size()), random, nKilled, nLeft);
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no change was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;
  EXPECT_TRUE(LFile::ListFolder(home_.SharedFolder() + "/Ledger/Intents").empty());

  LProfile profile(home_.SharedFolder());
  std::string log = LReadFile(home_.SharedFolder() + "/AuditTrail.log");
  ExpectTrailAgrees(profile, log, "Invoices", "Facture", "Total");
  ExpectTrailAgrees(profile, log, kPaymentsList, "Paiement", "Amount");
}

}  // namespace
