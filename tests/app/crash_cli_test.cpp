// Invoices recorded, edited and deleted, payments recorded, payments and a credit note applied to
// invoices, bills, bill payments and cheques, account renumberings, by the real binary, killed at
// random moments: afterwards, with no repair command, `kontavo check` finds every account balance
// equal to the journal, every customer and supplier balance and every item's stock movements
// equal to the documents, and says what it settled; every document has exactly its posting, no
// posting is left without its document, and the audit trail's chain holds.
#include <signal.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "accounts/cheques.h"
#include "accounts/billpayments.h"
#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "invoice/sales/salesposting.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/hashtable.h"
#include "tests/support/envscope.h"
#include "tests/support/salesbooks.h"
#include "tests/support/testhome.h"

namespace {

class CrashCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"item", "add", "P1", "--description", "Pain", "--price", "12.50"}).exitCode, 0);
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
            "P1|x|" + std::to_string(1 + n % 4) + "|12.50|Aucun|"};
  }
  static std::vector<std::string> Edit(const std::string& key, int n) {
    return {"invoice", "edit", key, "--customer", "C1", "--date", "2026-01-0" + std::to_string(1 + n % 9),
            "--line", "P1|x|" + std::to_string(2 + n % 5) + "|7.25|Aucun|"};
  }
  static std::vector<std::string> Delete(const std::string& key) { return {"invoice", "delete", key}; }
  // A cheque of the books, chosen at random, among the void ones when voidFirst and there are
  // some; empty when there is none.
  std::string AnyCheque(std::mt19937& random, bool voidFirst) const {
    LProfile profile(home_.SharedFolder());
    std::vector<std::string> keys = LChequeKeys(profile), voided;
    if (voidFirst) {
      for (const std::string& key : keys) {
        LCheque cheque;
        if (!profile.List(kChequesList).Open(cheque, key)) continue;
        cheque.DetachWithoutSave();
        if (cheque.IsVoid()) voided.push_back(key);
      }
      if (!voided.empty()) keys = std::move(voided);
    }
    return keys.empty() ? std::string() : keys[random() % keys.size()];
  }
  // Voids the cheque key, or takes its voiding back from the journal (counted in nVoid), or now
  // and then deletes it.
  std::vector<std::string> ChequeUndoing(const std::string& key, int round, int& nVoid) const {
    if (round % 8 == 7) return {"cheque", "delete", key};
    LCheque cheque;
    if (!LProfile(home_.SharedFolder()).List(kChequesList).Open(cheque, key)) return {"cheque", "delete", key};
    cheque.DetachWithoutSave();
    nVoid += cheque.IsVoid();
    if (cheque.IsVoid()) return {"ledger", "delete", cheque.GetString("VoidDate"), cheque.GetString("VoidTxnRef")};
    return {"cheque", "void", key, "--date", "2026-03-12"};
  }
  static std::vector<std::string> Payment() {
    return {"payment", "add", "--customer", "C1", "--amount", "20", "--date", "2026-01-06", "--auto"};
  }
  // The first command after the kills settled everything: the books check, the audit trail's
  // chain holds and no intent is left.
  void ExpectSettledWithoutRepair() const {
    LRunResult check = LRunKontavo({"check"});
    EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
    LRunResult audit = LRunKontavo({"audit", "verify"});
    EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;
    EXPECT_TRUE(LFile::ListFolder(home_.SharedFolder() + "/Ledger/Intents").empty());
  }
  // Records a first invoice; how long that took (0 when it failed), so that the kills fall all
  // over a recording.
  static long long FirstInvoiceUs() {
    auto start = std::chrono::steady_clock::now();
    if (LRunKontavo(Invoice(0)).exitCode != 0) return 0;
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
  }
  // Runs the commands all at once, killed after a random part of spanUs counted from the moment
  // the first began to change the books; counts the kills and the changes left midway.
  void RunKilled(const std::vector<std::vector<std::string>>& commands, long long spanUs, std::mt19937& random,
                 int& nKilled, int& nLeft) const {
    std::vector<std::unique_ptr<LChildProcess>> runs;
    long long trail = LAuditTrailSize(home_.SharedFolder());
    for (const auto& args : commands) runs.push_back(std::make_unique<LChildProcess>(KONTAVO_BIN, args));
    LWaitForWork([&] {
      return LAuditTrailSize(home_.SharedFolder()) != trail || LCountChangesLeft(home_.SharedFolder()) > 0;
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (spanUs + 1)));
    for (auto& run : runs) ::kill(run->Pid(), SIGKILL);
    for (auto& run : runs) nKilled += run->Wait() == 128 + SIGKILL;
    nLeft += LCountChangesLeft(home_.SharedFolder());
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
  for (LFileStoreIteratorBase it(profile.List(list), document); document.IsAttached(); it.Next(document)) {
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

TEST_F(CrashCli, KilledSalesChangesLeaveDocumentsAndPostingsTheNextCommandBringsInStep) {
  using Clock = std::chrono::steady_clock;
  long long runUs = FirstInvoiceUs();
  ASSERT_GT(runUs, 0);

  ASSERT_EQ(LRunKontavo({"creditnote", "new", "--customer", "C1", "--date", "2026-01-04", "--line", "|avoir|1|30|Aucun|"}).exitCode, 0);
  std::mt19937 random(25);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  int nLeft = 0, nKilled = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(120);
  for (int round = 0; round < 150 && Clock::now() < deadline; ++round) {
    std::vector<std::string> keys = InvoiceKeys();
    std::vector<std::vector<std::string>> commands{Invoice(round), Payment()};
    if (keys.size() > 1) {
      commands.push_back(Edit(keys[random() % keys.size()], round));
      if (round % 2 == 0) commands.push_back(Delete(keys[random() % keys.size()]));
      // Applications: a payment to one invoice, or a part of the credit note (the same invoice
      // takes the new amount).
      std::string applied = keys[random() % keys.size()];
      if (round % 3 == 1)
        commands.push_back({"payment", "add", "--customer", "C1", "--amount", "5", "--date", "2026-01-06", "--apply", applied + "=5"});
      if (round % 3 == 2) commands.push_back({"creditnote", "apply", "1", applied + "=" + std::to_string(1 + round % 2)});
    }
    RunKilled(commands, runUs, random, nKilled, nLeft);
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no recording was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  EXPECT_EQ(LLedgerIntentLeft(home_.SharedFolder()), "");
  // Nothing was left to repair: a second check is silent.
  LRunResult again = LRunKontavo({"check"});
  EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
  EXPECT_EQ(again.err.find("interrompue"), std::string::npos) << again.err;
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;

  // The documents and the ledger agree both ways.
  LProfile profile(home_.SharedFolder());
  std::set<LPosting> invoices = LExpectPostedAsBuilt(profile, "Invoices");
  std::set<LPosting> creditNotes = LExpectPostedAsBuilt(profile, "CreditNotes");
  std::set<LPosting> payments = LExpectPostedAsBuilt(profile, kPaymentsList);
  EXPECT_GT(invoices.size(), 1u);
  EXPECT_EQ(creditNotes.size(), 1u);
  invoices.insert(creditNotes.begin(), creditNotes.end());
  EXPECT_EQ(LPostingsOfType(profile, kTxnTypeSales), invoices);
  EXPECT_EQ(LPostingsOfType(profile, kTxnTypeReceipt), payments);
  // The stock of the loaves left is what the invoices say, movement by movement.
  std::map<std::string, double> sold, moved;  // by document
  LSalesDocument invoice;
  for (LFileStoreIteratorBase it(profile.MainList("Invoices"), invoice); invoice.IsAttached(); it.Next(invoice))
    sold["Invoices/" + invoice.GetPrimaryKey()] = -invoice.Items().GetItemQty(0);
  invoice.Invalidate();
  LItem loaf;
  ASSERT_TRUE(profile.MainList(kItemsList).Open(loaf, "P1"));
  for (const LStockMove& move : LStockReadMoves(loaf)) moved[move.document] += move.quantity;
  loaf.DetachWithoutSave();
  EXPECT_EQ(moved, sold);
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

  ExpectSettledWithoutRepair();

  LProfile profile(home_.SharedFolder());
  std::string log = LReadFile(home_.SharedFolder() + "/AuditTrail.log");
  ExpectTrailAgrees(profile, log, "Invoices", "Facture", "Total");
  ExpectTrailAgrees(profile, log, kPaymentsList, "Paiement", "Amount");
}

// Bills recorded and replaced, bill payments and cheques spread over them, cheques voided, their
// voiding taken back from the journal and cheques deleted, killed at random moments: the next
// command brings every bill's and bill payment's posting (and a void one's reversal), the
// payment's link to it, each cheque with its bill payment, the amounts paid and the supplier's
// balance back in step, and the audit trail says what the documents show.
TEST_F(CrashCli, KilledPurchaseChangesLeaveBillsPostingsAndFiguresTheNextCommandBringsInStep) {
  ASSERT_EQ(LRunKontavo({"supplier", "add", "S1", "Name=Fournil"}).exitCode, 0);
  auto bill = [](int n) {
    return std::vector<std::string>{"bill", "add", "--supplier", "S1", "--date", "2026-03-0" + std::to_string(1 + n % 9),
                                    "6410:" + std::to_string(40 + n % 7)};
  };
  using Clock = std::chrono::steady_clock;
  Clock::time_point start = Clock::now();
  ASSERT_EQ(LRunKontavo(bill(0)).exitCode, 0);
  long long runUs = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();

  std::mt19937 random(31);
  int nLeft = 0, nKilled = 0, nVoid = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(90);
  for (int round = 0; round < 100 && Clock::now() < deadline; ++round) {
    std::vector<std::string> keys;
    for (const std::string& name : LFile::ListFolder(home_.SharedFolder() + "/Bills"))
      if (name.ends_with(".dat")) keys.push_back(name.substr(0, name.size() - 4));
    std::vector<std::vector<std::string>> commands{
        bill(round), {"billpayment", "add", "--supplier", "S1", "--amount", "30", "--date", "2026-03-10", "--auto"}};
    if (round % 2 == 1)  // a cheque to the supplier is a bill payment too
      commands.push_back({"cheque", "add", "--account", "1110", "--payee", "Fournil", "--amount", "12", "--date",
                          "2026-03-11", "--supplier", "S1", "--auto"});
    if (std::string cheque = AnyCheque(random, round % 2 == 0); !cheque.empty())
      commands.push_back(ChequeUndoing(cheque, round, nVoid));
    if (!keys.empty()) {
      std::vector<std::string> replaced = bill(round + 3);
      replaced.insert(replaced.begin() + 2, {"--ref", keys[random() % keys.size()]});
      commands.push_back(replaced);
    }
    // Now and then a round runs whole, so that some cheques are void and their voiding gets taken
    // back under the kills even when a loaded machine kills every voiding before it ends.
    if (round % 6 == 3) {
      for (const auto& args : commands) (void)LRunKontavo(args);
      continue;
    }
    RunKilled(commands, runUs * static_cast<long long>(commands.size()), random, nKilled, nLeft);
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no change was ever killed midway: the test proved nothing";

  ExpectSettledWithoutRepair();

  // Every bill has exactly its posting, and every purchase posting its bill.
  LProfile profile(home_.SharedFolder());
  std::set<LPosting> bills;
  LBill record;
  for (LFileStoreIteratorBase it(profile.List(kBillsList), record); record.IsAttached(); it.Next(record)) {
    LLedgerTransaction built, posted;
    LBillBuildTransaction(profile, record, record.GetPrimaryKey(), "", built);
    EXPECT_TRUE(LLedgerTransactionLoad(profile, posted, record.GetString("Date"), record.GetPrimaryKey()));
    EXPECT_TRUE(LLedgerTransactionEqual(posted, built)) << record.GetPrimaryKey();
    bills.insert({record.GetString("Date"), record.GetPrimaryKey()});
  }
  record.Invalidate();
  EXPECT_GT(bills.size(), 1u);
  EXPECT_EQ(LPostingsOfType(profile, kTxnTypePurchase), bills);
  // Every bill payment likewise, its record naming its posting.
  std::set<LPosting> paid;
  LBillPayment payment;
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment)) {
    std::string reference = payment.GetString("JournalTxnRef");
    EXPECT_FALSE(reference.empty()) << "bill payment " << payment.GetPrimaryKey() << " names no posting";
    LLedgerTransaction built, posted;
    LBillPaymentBuildTransaction(profile, payment, reference, "", built);
    EXPECT_TRUE(LLedgerTransactionLoad(profile, posted, payment.GetString("Date"), reference));
    EXPECT_TRUE(LLedgerTransactionEqual(posted, built)) << "bill payment " << payment.GetPrimaryKey();
    paid.insert({payment.GetString("Date"), reference});
    if (LBillPaymentIsVoid(payment)) paid.insert({payment.GetString("VoidDate"), payment.GetString("VoidTxnRef")});
    if (!payment.GetString("ChequeNumber").empty()) {
      EXPECT_FALSE(LChequeOfBillPayment(profile, payment.GetPrimaryKey()).empty())
          << "bill payment " << payment.GetPrimaryKey() << " stands without its cheque";
    }
  }
  payment.Invalidate();
  EXPECT_GT(paid.size(), 1u);
  EXPECT_FALSE(LChequeKeys(profile).empty());  // and the check found each with its bill payment
  EXPECT_GT(nVoid, 0) << "no cheque was ever found void: voiding was never tried whole";
  for (const std::string& key : LChequeKeys(profile)) {
    LCheque cheque;
    ASSERT_TRUE(profile.List(kChequesList).Open(cheque, key));
    cheque.DetachWithoutSave();
    EXPECT_EQ(LLedgerTransactionTestExists(profile, "2026-03-12", key + "V"), cheque.IsVoid()) << "cheque " << key;
  }
  EXPECT_EQ(LPostingsOfType(profile, kTxnTypeBillPayment), paid);
  std::string log = LReadFile(home_.SharedFolder() + "/AuditTrail.log");
  ExpectTrailAgrees(profile, log, kBillsList, "Facture fournisseur", "Total");
  ExpectTrailAgrees(profile, log, kBillPaymentsList, "Règlement", "Amount");
}

// An account renumbered back and forth, each run killed at a random moment once it has begun:
// whatever the moment, the next command finds one number in the whole ledger, on the record and
// in every row, with balances equal to the journal, and logs the renumbering it finished.
TEST_F(CrashCli, KilledRenumberingsLeaveOneNumberTheNextCommandFinishes) {
  {
    LProfile profile(home_.SharedFolder());
    ASSERT_TRUE(LCreateAccount(profile, "6251", "Voyages", kAccountExpense, false, 1, kClassificationNone));
    ASSERT_TRUE(LCreateAccount(profile, "5300", "Caisse", kAccountAsset, true, 0, kClassificationNone));
    for (int day = 0; day < 300; ++day) {  // one day file each: a renumbering rewrites them one by one
      char date[16];
      std::snprintf(date, sizeof date, "2025-%02d-%02d", 1 + day / 28, 1 + day % 28);
      LLedgerTransaction txn(date, "T" + std::to_string(day), "General");
      txn.AddLine("6251", "Taxi", 1000 + day, "anne", "", "");
      txn.AddLine("5300", "Taxi", -1000 - day, "anne", "", "");
      ASSERT_TRUE(LAccountTransactionRecord(profile, txn));
    }
  }
  std::string accounts = home_.SharedFolder() + "/Accounts/";
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  auto renumber = [](const std::string& from, const std::string& to) {
    return std::vector<std::string>{"account", "edit", from, "--number", to, "--yes"};
  };
  // The number the books give the account: its record's, which no row of another may contradict.
  auto current = [&] {
    bool first = LFile::Exists(accounts + "6251.dat"), second = LFile::Exists(accounts + "6252.dat");
    EXPECT_NE(first, second) << "the account has " << (first ? "two records" : "no record");
    return std::string(second ? "6252" : "6251");
  };
  using Clock = std::chrono::steady_clock;
  Clock::time_point start = Clock::now();
  ASSERT_EQ(LRunKontavo(renumber("6251", "6252")).exitCode, 0);
  long long runUs = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();

  std::mt19937 random(41);
  int nKilled = 0, nFinished = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(90);
  for (int round = 0; round < 40 && Clock::now() < deadline; ++round) {
    std::string from = current(), to = from == "6251" ? "6252" : "6251";
    LChildProcess run(KONTAVO_BIN, renumber(from, to));
    // Started: its intent is written (a slow start under the sanitizers is not part of the span).
    LWaitForWork([&] { return !LFile::ListFolder(intents).empty() || LFile::Exists(accounts + to + ".dat"); });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (runUs + 1)));
    ::kill(run.Pid(), SIGKILL);
    nKilled += run.Wait() == 128 + SIGKILL;

    LRunResult check = LRunKontavo({"check"});
    EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
    nFinished += check.err.find("a été achevé") != std::string::npos;
    EXPECT_TRUE(LFile::ListFolder(intents).empty());
    std::string number = current(), other = number == "6251" ? "6252" : "6251";
    LProfile profile(home_.SharedFolder());
    int nRows = 0;
    LLedgerAccountLineIterator it(profile, "", "");
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
      EXPECT_NE(it.line.account, other) << it.line.date << " still names the number the account left";
      nRows += it.line.account == number;
    }
    EXPECT_EQ(nRows, 300) << "round " << round;
    if (HasFailure()) break;
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nFinished, 0) << "no renumbering was ever killed midway: the test proved nothing";
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;
}

}  // namespace
