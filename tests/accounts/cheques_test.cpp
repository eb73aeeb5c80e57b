// Cheques, cash transactions and transaction templates, called as the command line and the web
// pages call them: what each posts, what voiding and deleting take back, what a cheque killed
// before its record leaves, and that the balances cached in the accounts stay those of the ledger
// throughout.
#include "accounts/cheques.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/cashtxn.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/purchaseintent.h"
#include "accounts/question.h"
#include "accounts/txntemplates.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "tests/support/defaultchart.h"
#include "tests/support/killpoints.h"
#include "tests/support/testhome.h"

namespace {

class ChequesTest : public LHomeTest {
 protected:
  void SetUp() override {
    LSetUpDefaultChart(profile_, "FR");
  }
  long long Total(const char* number) {
    LAccount account;
    LAccountList(profile_).Open(account, number);
    return account.GetTotalBalance();
  }
  // The rows of a transaction as "account amount" texts.
  std::vector<std::string> Rows(const std::string& date, const std::string& reference) {
    LLedgerTransaction txn;
    std::vector<std::string> rows;
    if (!LLedgerTransactionLoad(profile_, txn, date, reference)) return rows;
    for (const auto& line : txn.Lines()) rows.push_back(line.account + " " + std::to_string(line.amount));
    return rows;
  }
  void ExpectBooksInStep() {
    LBookCheckProcess check{&profile_, false, {}};
    LProcessInterfaceVoid silent;
    ASSERT_EQ(Process(silent, check), kProcessFinished);
    EXPECT_TRUE(check.report.differences.empty() && check.report.problems.empty());
  }
  LChequeRequest Rent(const LDate& date) {
    LChequeRequest request;
    request.account = "1110";
    request.payee = "SCI Bailleur";
    request.amount = 80000;
    request.date = date;
    request.lines = {{"6410", 75000, ""}, {"6510", 5000, "Assurance"}};
    return request;
  }
  // A cheque of amount cents today to the supplier "S1" (made first).
  LChequeRequest ToSupplier(long long amount) {
    LRecord supplier;
    profile_.List(kSuppliersList).OpenAlways(supplier, "S1");
    supplier.SetString("Name", "Papeterie");
    EXPECT_TRUE(supplier.Flush());
    LChequeRequest request;
    request.account = "1110";
    request.payee = "Papeterie";
    request.amount = amount;
    request.date = today_;
    request.supplier = "S1";
    return request;
  }
  LProfile profile_;
  LDate today_ = LDate::Today();
};

TEST_F(ChequesTest, ChequeIsNumberedPostedVoidedAndTakenBackThroughTheJournal) {
  LFixedAsker yes(true), no(false);
  std::string message, key;
  ASSERT_TRUE(LChequeSetNextNumber(profile_, "1110", "0101", &message)) << message;
  EXPECT_FALSE(LChequeSetNextNumber(profile_, "6410", "5", &message));
  EXPECT_EQ(message, "Le compte 6410 n'est pas un compte de banque ou de caisse.");

  // Refusals leave the books and the counters as they were.
  LChequeRequest wrong = Rent(today_);
  wrong.lines[0].amount = 70000;
  EXPECT_FALSE(LChequeWrite(profile_, yes, wrong, key, &message));
  EXPECT_NE(message.find("ne correspond pas au montant"), std::string::npos) << message;
  wrong = Rent(today_);
  wrong.lines.push_back({"1110", 1, ""});
  wrong.amount += 1;
  EXPECT_FALSE(LChequeWrite(profile_, yes, wrong, key, &message));
  EXPECT_EQ(message, "Une ligne ne peut pas être imputée sur le compte payeur lui-même.");
  EXPECT_FALSE(LChequeWrite(profile_, no, Rent(today_.AddDays(-400)), key, &message));
  EXPECT_NE(message.find("qui date de plus d'un an"), std::string::npos);
  EXPECT_TRUE(LChequeKeys(profile_).empty());
  EXPECT_EQ(LChequeNextNumber(profile_, "1110"), 101);

  ASSERT_TRUE(LChequeWrite(profile_, yes, Rent(today_), key, &message)) << message;
  EXPECT_EQ(key, "PMT10000");
  EXPECT_EQ(Rows(today_.ToText(), key), (std::vector<std::string>{"6410 75000", "6510 5000", "1110 -80000"}));
  EXPECT_EQ(LChequeNextNumber(profile_, "1110"), 102);
  EXPECT_EQ(LChequeFind(profile_, "1110", "101"), std::vector<std::string>{key});
  LChequeRequest again = Rent(today_);
  again.number = "101";
  EXPECT_FALSE(LChequeWrite(profile_, yes, again, key, &message));
  EXPECT_EQ(message, "Le chèque n° 101 de ce compte existe déjà.");

  // Voided a week later: the cheque stays, its posting reversed on that day.
  LDate later = today_.AddDays(7);
  EXPECT_FALSE(LChequeVoid(profile_, yes, "PMT10000", today_.AddDays(-1), &message));
  EXPECT_EQ(message, "La date d'annulation ne peut pas précéder la date du chèque.");
  ASSERT_TRUE(LChequeVoid(profile_, yes, "PMT10000", later, &message)) << message;
  EXPECT_FALSE(LChequeVoid(profile_, yes, "PMT10000", later, &message));
  EXPECT_EQ(message, "Ce chèque est déjà annulé.");
  EXPECT_EQ(Rows(later.ToText(), "PMT10000V"), (std::vector<std::string>{"6410 -75000", "6510 -5000", "1110 80000"}));
  EXPECT_EQ(Total("1110"), 0);
  EXPECT_EQ(Total("6410"), 0);
  ExpectBooksInStep();

  // The reversal deleted from the journal: the cheque counts again. Its own transaction
  // deleted: the cheque goes with it.
  ASSERT_TRUE(LedgerTransactionDelete(profile_, later.ToText(), "PMT10000V"));
  LCheque cheque;
  ASSERT_TRUE(profile_.List(kChequesList).Open(cheque, "PMT10000"));
  EXPECT_FALSE(cheque.IsVoid());
  EXPECT_EQ(Total("1110"), -80000);
  ASSERT_TRUE(LedgerTransactionDelete(profile_, today_.ToText(), "PMT10000"));
  EXPECT_TRUE(LChequeKeys(profile_).empty());
  EXPECT_EQ(Total("1110"), 0);
  EXPECT_EQ(Total("6510"), 0);
  ExpectBooksInStep();
}

TEST_F(ChequesTest, ChequeToASupplierIsABillPaymentAndCashMovesBothSides) {
  LFixedAsker yes(true);
  std::string message, key;
  LChequeRequest request = ToSupplier(30000);
  request.supplier = "NOBODY";
  EXPECT_FALSE(LChequeWrite(profile_, yes, request, key, &message));
  EXPECT_EQ(message, "Le fournisseur NOBODY n'existe pas.");
  request.supplier = "S1";
  ASSERT_TRUE(LChequeWrite(profile_, yes, request, key, &message)) << message;
  EXPECT_EQ(Rows(today_.ToText(), key), (std::vector<std::string>{"2210 30000", "1110 -30000"}));
  LCheque cheque;
  ASSERT_TRUE(profile_.List(kChequesList).Open(cheque, key));
  EXPECT_EQ(cheque.GetBillPayment(), "1");
  // Deleted from the journal, the cheque takes its bill payment along.
  ASSERT_TRUE(LedgerTransactionDelete(profile_, today_.ToText(), key));
  EXPECT_FALSE(profile_.List("BillPayments").TestRecordExists("1"));
  EXPECT_TRUE(LChequeKeys(profile_).empty());

  LCashTxnRequest receipt{"1190", true, 12000, today_, "Vente comptoir", {{"4110", 10000, ""}, {"2410", 2000, "TVA"}}};
  ASSERT_TRUE(LCashTxnRecord(profile_, yes, receipt, key, &message)) << message;
  EXPECT_EQ(Rows(today_.ToText(), key), (std::vector<std::string>{"1190 12000", "4110 -10000", "2410 -2000"}));
  LCashTxnRequest payment{"1190", false, 1500, today_, "", {{"6420", 1500, "Timbres"}}};
  std::string paid;
  ASSERT_TRUE(LCashTxnRecord(profile_, yes, payment, paid, &message)) << message;
  EXPECT_EQ(Rows(today_.ToText(), paid), (std::vector<std::string>{"1190 -1500", "6420 1500"}));
  EXPECT_EQ(Total("1190"), 10500);
  payment.account = "6420";
  EXPECT_FALSE(LCashTxnRecord(profile_, yes, payment, paid, &message));
  EXPECT_EQ(message, "Le compte 6420 n'est pas un compte de banque ou de caisse.");
  ASSERT_TRUE(LedgerTransactionDelete(profile_, today_.ToText(), key));
  EXPECT_FALSE(profile_.List(kCashTransactionsList).TestRecordExists(key));
  EXPECT_EQ(Total("1190"), -1500);
  ExpectBooksInStep();
}

// A cheque written by a process that died before saving its record, after its posting (or the
// bill payment that posts it) was made: the next holder of the ledger lock takes that posting
// back, so the number is free and no payment stands without its cheque.
TEST_F(ChequesTest, AChequeKilledBeforeItsRecordLeavesNothingBehind) {
  LChequeRequest toSupplier = ToSupplier(30000);
  std::string date = today_.ToText();
  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {  // what LChequeWrite does before it saves the cheque, then the kill
    LProfile books;
    auto* supplierCheque = new LPurchaseChangeIntent(books);  // never destroyed: the process dies
    supplierCheque->NoteCheque("1110", "7", {}, date);
    LAccount bank;
    (void)LAccountList(books).Open(bank, "1110");
    LBillPaymentRequest payment{.supplier = "S1", .amount = 30000, .date = date, .payingAccount = bank.GetDescription(),
                                .notes = {}, .method = std::string(kChequeMethod), .cheque = "7"};
    std::string key, error;
    bool made = LBillPaymentCreate(books, payment, key, error);
    auto* rentCheque = new LPurchaseChangeIntent(books);
    rentCheque->NoteCheque("1110", "8", "CHQ8", date);
    LLedgerTransaction rent(date, "CHQ8", kTxnTypeBillPayment);
    rent.AddLine("6410", "Loyer", 800, "anne", "", "CHQ8");
    rent.AddLine("1110", "Loyer", -800, "anne", "", "CHQ8");
    ::_exit(made && LAccountTransactionRecord(books, rent) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  ASSERT_TRUE(profile_.List(kBillPaymentsList).TestRecordExists("1"));

  ExpectBooksInStep();  // the check takes the lock: the cheques are settled first
  EXPECT_FALSE(profile_.List(kBillPaymentsList).TestRecordExists("1"));
  EXPECT_FALSE(LLedgerTransactionTestExists(profile_, date, "CHQ8"));
  EXPECT_EQ(Total("1110"), 0);
  LFixedAsker yes(true);
  std::string key, message;
  toSupplier.number = "7";
  EXPECT_TRUE(LChequeWrite(profile_, yes, toSupplier, key, &message)) << message;
  ExpectBooksInStep();
}

// A cheque to a supplier voided, its voiding taken back from the journal, and the cheque deleted,
// each killed at every one of its steps in turn: the next holder of the ledger lock leaves the
// cheque, its bill payment, their postings and the supplier's figures in step, the change either
// not begun or whole.
TEST_F(ChequesTest, AChequeVoidedUnvoidedOrDeletedIsInStepWhereverItWasKilled) {
  LFixedAsker yes(true);
  LBill bill;
  bill.SetString("Supplier", "S1");
  bill.SetString("Date", today_.ToText());
  bill.AddItemLine("6410", 100000000, "");
  LChequeRequest request = ToSupplier(1500);
  ASSERT_TRUE(LBillSave(profile_, bill, "test"));
  request.autoApply = true;
  // Each cheque on its own days, so that every run of a change has the same steps.
  int nDays = 0;
  LDate voidDate;
  std::string key, message;
  auto write = [&](bool voided) {
    request.date = today_.AddDays(-2 * ++nDays);
    voidDate = request.date.AddDays(1);
    ASSERT_TRUE(LChequeWrite(profile_, yes, request, key, &message)) << message;
    if (voided) {
      ASSERT_TRUE(LChequeVoid(profile_, yes, key, voidDate, &message)) << message;
    }
  };
  auto inspect = [&](const std::string& where) {
    SCOPED_TRACE(where);
    ExpectBooksInStep();  // the check takes the lock: the change is settled first
    bool posted = LLedgerTransactionTestExists(profile_, request.date.ToText(), key);
    bool reversed = LLedgerTransactionTestExists(profile_, voidDate.ToText(), key + "V");
    LCheque cheque;
    if (!profile_.List(kChequesList).Open(cheque, key)) {
      EXPECT_FALSE(posted || reversed);
      return;
    }
    cheque.DetachWithoutSave();
    EXPECT_TRUE(posted);
    EXPECT_EQ(reversed, cheque.IsVoid());
  };
  int nDeleted = LKillAtEachStep([&] { write(true); }, [&] { (void)LChequeDelete(profile_, key, nullptr); }, inspect);
  int nVoided = LKillAtEachStep([&] { write(false); }, [&] { (void)LChequeVoid(profile_, yes, key, voidDate, nullptr); },
                                inspect);
  int nUnvoided = LKillAtEachStep(
      [&] { write(true); }, [&] { (void)LedgerTransactionDelete(profile_, voidDate.ToText(), key + "V"); }, inspect);
  EXPECT_GT(nVoided, 5);
  EXPECT_GT(nUnvoided, 5);
  EXPECT_GT(nDeleted, 5);
}

TEST_F(ChequesTest, ChequeSettlesBillsAndVoidingItGivesThemBack) {
  LFixedAsker yes(true);
  std::string message, key;
  LChequeRequest request = ToSupplier(15000);
  auto bill = [&](long long amount) {
    LBill record;
    record.SetString("Supplier", "S1");
    record.SetString("Date", today_.ToText());
    record.AddItemLine("6410", amount, "");
    EXPECT_TRUE(LBillSave(profile_, record, "test"));
    return record.GetPrimaryKey();
  };
  std::string first = bill(10000), second = bill(20000);
  auto paid = [&](const std::string& key) {
    LBill record;
    profile_.List(kBillsList).Open(record, key);
    return record.GetInt64("AmountPaid", -1);
  };
  auto balance = [&] {
    LRecord record;
    profile_.List(kSuppliersList).Open(record, "S1");
    return record.GetInt64("Balance", -1);
  };

  // The bill payments' rules, and nothing written when one refuses.
  request.applications = {{first, 10000}, {second, 10000}};
  EXPECT_FALSE(LChequeWrite(profile_, yes, request, key, &message));
  EXPECT_EQ(message, "Le total appliqué aux factures ($200.00) dépasse le montant du règlement ($150.00).");
  request.applications = {{first, 10001}};
  EXPECT_FALSE(LChequeWrite(profile_, yes, request, key, &message));
  EXPECT_EQ(message, "Le montant appliqué à la facture " + first +
                         " doit être compris entre 0 et ce qu'elle doit encore ($100.00).");
  LChequeRequest unnamed = request;
  unnamed.supplier.clear();
  EXPECT_FALSE(LChequeWrite(profile_, yes, unnamed, key, &message));
  EXPECT_EQ(message, "Seul un chèque à un fournisseur peut régler des factures.");
  EXPECT_TRUE(LChequeKeys(profile_).empty());
  EXPECT_FALSE(profile_.List(kBillPaymentsList).TestRecordExists("1"));
  EXPECT_EQ(LChequeNextNumber(profile_, "1110"), 1);

  request.applications = {{first, 10000}, {second, 5000}};
  ASSERT_TRUE(LChequeWrite(profile_, yes, request, key, &message)) << message;
  LCheque cheque;
  ASSERT_TRUE(profile_.List(kChequesList).Open(cheque, key));
  std::string payment = cheque.GetBillPayment();
  EXPECT_EQ(paid(first), 10000);
  EXPECT_EQ(paid(second), 5000);
  EXPECT_EQ(balance(), 15000);
  // The cheque holds the payment's figures: only its applications may change.
  LBillPaymentRequest changed{"S1", 12000, today_.ToText(), "", "", "", {}};
  EXPECT_FALSE(LBillPaymentEdit(profile_, payment, changed, message));
  EXPECT_EQ(message, "Le règlement « " + payment + " » est le chèque n° 1 : seules ses imputations et ses notes peuvent changer.");
  ASSERT_TRUE(LBillPaymentApply(profile_, payment, second, 4000, message)) << message;
  EXPECT_EQ(paid(second), 4000);
  ExpectBooksInStep();

  // Voided: the bills and the supplier owe again what the cheque paid; the payment stays, void.
  LDate later = today_.AddDays(3);
  ASSERT_TRUE(LChequeVoid(profile_, yes, key, later, &message)) << message;
  EXPECT_EQ(Rows(later.ToText(), key + "V"), (std::vector<std::string>{"2210 -15000", "1110 15000"}));
  EXPECT_EQ(paid(first), 0);
  EXPECT_EQ(paid(second), 0);
  EXPECT_EQ(balance(), 30000);
  EXPECT_EQ(Total("1110"), 0);
  LRecord record;
  ASSERT_TRUE(profile_.List(kBillPaymentsList).Open(record, payment));
  EXPECT_TRUE(LBillPaymentIsVoid(record));
  EXPECT_EQ(LBillPaymentUnapplied(record), 0);
  record.DetachWithoutSave();
  EXPECT_FALSE(LBillPaymentApply(profile_, payment, first, 100, message));
  EXPECT_EQ(message, "Le règlement « " + payment + " » est annulé : il ne peut plus être modifié.");
  ExpectBooksInStep();

  // Meanwhile the second bill is paid otherwise; the voiding undone from the journal, the cheque
  // takes back what the bills still owe.
  std::string reference;
  ASSERT_TRUE(LBillPaymentCreate(profile_, {"S1", 20000, later.ToText(), "", "", "", {{second, 20000}}}, reference, message));
  ASSERT_TRUE(LedgerTransactionDelete(profile_, later.ToText(), key + "V"));
  EXPECT_EQ(paid(first), 10000);
  EXPECT_EQ(paid(second), 20000);
  EXPECT_EQ(balance(), -5000);
  ASSERT_TRUE(profile_.List(kBillPaymentsList).Open(record, payment));
  EXPECT_EQ(LBillPaymentUnapplied(record), 5000);
  record.DetachWithoutSave();
  ExpectBooksInStep();

  // Voided again, then its own transaction deleted: cheque, payment and reversal all go.
  ASSERT_TRUE(LChequeVoid(profile_, yes, key, later, &message)) << message;
  ASSERT_TRUE(LedgerTransactionDelete(profile_, today_.ToText(), key));
  EXPECT_TRUE(LChequeKeys(profile_).empty());
  EXPECT_FALSE(profile_.List(kBillPaymentsList).TestRecordExists(payment));
  EXPECT_TRUE(Rows(later.ToText(), key + "V").empty());
  EXPECT_EQ(balance(), 10000);
  EXPECT_EQ(Total("1110"), -20000);
  ExpectBooksInStep();
}

TEST_F(ChequesTest, TemplateScalesEachSideToTheNewTotalToTheCent) {
  LTxnTemplate rent{"Loyer", "Loyer mensuel", kJournalEntryGeneralType, "GJ[auto]",
                    {{"6410", 100, ""}, {"6420", 100, ""}, {"6510", 100, ""}, {"1110", 300, "CR"}}};
  std::string message;
  LTxnTemplate unbalanced = rent;
  unbalanced.lines.back().amount = 299;
  EXPECT_FALSE(LTxnTemplateSave(profile_, unbalanced, &message));
  EXPECT_NE(message.find("équilibrée"), std::string::npos);
  ASSERT_TRUE(LTxnTemplateSave(profile_, rent, &message)) << message;
  LTxnTemplate loaded;
  ASSERT_TRUE(LTxnTemplateLoad(profile_, "Loyer", loaded));
  EXPECT_EQ(loaded.Debits(), 300);

  // A third of a cent each way: two lines round down, the last takes what is left.
  std::vector<LJournalEntryLine> lines = LTxnTemplateScaledLines(loaded, 100);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].amount, 33);
  EXPECT_EQ(lines[1].amount, 33);
  EXPECT_EQ(lines[2].amount, 34);
  EXPECT_EQ(lines[3].amount, 100);
  EXPECT_EQ(LTxnTemplateScaledLines(loaded, 0)[0].amount, 100);

  LFixedAsker yes(true);
  LJournalEntryDlg entry(profile_, yes);
  LTxnTemplateFillEntry(loaded, today_, 90000000, entry);
  ASSERT_TRUE(entry.CmOk(&message)) << message;
  EXPECT_EQ(entry.GetSavedReference(), "GJ10000");
  EXPECT_EQ(Rows(today_.ToText(), "GJ10000"),
            (std::vector<std::string>{"6410 30000000", "6420 30000000", "6510 30000000", "1110 -90000000"}));
  EXPECT_EQ(LTxnTemplateNames(profile_), std::vector<std::string>{"Loyer"});
  EXPECT_TRUE(LTxnTemplateDelete(profile_, "Loyer"));
  EXPECT_FALSE(LTxnTemplateLoad(profile_, "Loyer", loaded));
}

}  // namespace
