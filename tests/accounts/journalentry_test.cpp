// Journal entries, the date guard of every posting and the linked-account check, called as the
// windows call them (the command line's journal tests prove the same rules end to end).
#include "accounts/journalentry.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "accounts/accounts.h"
#include "accounts/accountrenumber.h"
#include "accounts/ledger.h"
#include "accounts/linkedaccounts.h"
#include "accounts/question.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "tests/support/defaultchart.h"
#include "tests/support/testhome.h"

namespace {

class JournalEntryTest : public LHomeTest {
 protected:
  void SetUp() override {
    LSetUpDefaultChart(profile_, "FR");
  }
  // An entry debiting debit and crediting credit by amount.
  LJournalEntryDlg Rent(LAsker& asker, const LDate& date, long long amount, const char* reference = "GJ[auto]",
                        const char* debit = "6410", const char* credit = "1110") {
    LJournalEntryDlg dialog(profile_, asker);
    dialog.date = date;
    dialog.reference = reference;
    dialog.description = "Loyer";
    dialog.lines = {{debit, amount, ""}, {credit, amount, "CR"}};
    return dialog;
  }
  // Sets one field of a record of the "Misc" list ("Options", "Company", "Tax").
  void SetMisc(const char* key, const char* field, const char* value) {
    LRecord record;
    profile_.List(kMiscList).OpenAlways(record, key);
    record.SetString(field, value);
    EXPECT_TRUE(record.Flush());
  }
  long long Total(const char* number) {
    LAccount account;
    LAccountList(profile_).Open(account, number);
    return account.GetTotalBalance();
  }
  LProfile profile_;
};

TEST_F(JournalEntryTest, DateGuardCountsSecondsNotDays) {
  LFixedAsker no(false);
  LDate today(2024, 6, 30);
  std::string message;
  // 364 days is 31,449,600 s: one second short of the limit.
  EXPECT_TRUE(LCheckTransactionDate(profile_, no, today.AddDays(-364), &message, today));
  EXPECT_EQ(no.nAsked, 0);
  EXPECT_FALSE(LCheckTransactionDate(profile_, no, today.AddDays(-365), &message, today));
  EXPECT_EQ(no.nAsked, 1);
  EXPECT_EQ(no.lastQuestion.title + "/" + no.lastQuestion.confirm + "/" + no.lastQuestion.cancel,
            "Date incorrecte/Enregistrer/Annuler");
  EXPECT_EQ(message,
            "Vous avez entré la date \"2023-07-01\", qui date de plus d'un an. Voulez-vous vraiment vous enregistrer ?");
  LFixedAsker yes(true);
  EXPECT_TRUE(LCheckTransactionDate(profile_, yes, today.AddDays(-2000), &message, today));
  // The future limit is refused even when confirmed.
  SetMisc("Options", "ProhibitTransactionsInFuture", "1");
  EXPECT_TRUE(LCheckTransactionDate(profile_, no, today.AddDays(364), &message, today));
  EXPECT_FALSE(LCheckTransactionDate(profile_, yes, today.AddDays(365), &message, today));
  // An old date confirmed still meets the closing date.
  SetMisc("Company", "CTDEnabled", "1");
  SetMisc("Company", "CTDDate", "2022-12-31");
  EXPECT_FALSE(LCheckTransactionDate(profile_, yes, LDate(2022, 12, 31), &message, today));
  EXPECT_EQ(message.rfind("Les données entrées sont antérieures à la date de clôture.", 0), 0u);
  EXPECT_TRUE(LCheckTransactionDate(profile_, yes, LDate(2023, 1, 1), &message, today));
}

TEST_F(JournalEntryTest, ReconciledBankLineAsksBeforeSaving) {
  LFixedAsker yes(true);
  LDate day = LDate::Today().AddDays(-1);
  LJournalEntryDlg first = Rent(yes, day, 10000);
  std::string message;
  ASSERT_TRUE(first.CmOk(&message));
  EXPECT_EQ(message, "La transaction a été enregistrée.");
  ASSERT_EQ(first.GetSavedReference(), "GJ10000");
  EXPECT_EQ(Total("6410"), 10000);
  EXPECT_EQ(Total("1110"), -10000);

  std::filesystem::create_directories(home_.SharedFolder() + "/Reconcile");
  LWriteFile(home_.SharedFolder() + "/Reconcile/1110.csv", "\"" + day.ToText() + "\",\"gj10000\",\"-100.00\"\r\n");
  LFixedAsker no(false);
  LJournalEntryDlg edit = Rent(no, day, 20000, "GJ10000");
  edit.existing = true;
  edit.storedDate = day.ToText();
  edit.storedReference = "GJ10000";
  EXPECT_FALSE(edit.CmOk(&message));
  EXPECT_EQ(message, "Cet enregistrement de transaction a été rapproché. Voulez-vous vraiment l'enregistrer ?");
  EXPECT_EQ(no.lastQuestion.confirm + "/" + no.lastQuestion.cancel, "Enregistrer/Non");
  EXPECT_EQ(Total("6410"), 10000);
  // A line on a non-cash account alone is never looked up.
  LJournalEntryDlg other = Rent(no, day, 5, "X1", "6410", "6420");
  LWriteFile(home_.SharedFolder() + "/Reconcile/6410.csv", "\"" + day.ToText() + "\",\"X1\",\"0.05\"\r\n");
  EXPECT_TRUE(other.CmOk(&message));
  EXPECT_EQ(no.nAsked, 1);
}

TEST_F(JournalEntryTest, RefusedEntriesConsumeNoNumberAndChangeNothing) {
  LFixedAsker yes(true);
  LDate day = LDate::Today();
  LJournalEntryDlg unbalanced = Rent(yes, day, 100);
  unbalanced.lines.back().amount = 99;
  std::string message;
  EXPECT_EQ(unbalanced.GetOutOfBalance(), 1);
  EXPECT_FALSE(unbalanced.CmOk(&message));
  LJournalEntryDlg noDescription = Rent(yes, day, 100);
  noDescription.description.clear();
  EXPECT_FALSE(noDescription.CmOk(&message));
  EXPECT_EQ(message, "Veuillez entrer une description de transaction.");
  LOptions options;
  options.OpenFrom(profile_);
  EXPECT_FALSE(options.TestFieldExists("RefNumberGenJournal"));
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Ledger/" + day.ToText() + ".csv"));
}

// The account column holds "number - name": the number ends at a blank; an unknown type is General.
TEST_F(JournalEntryTest, AccountColumnAndTypeTexts) {
  EXPECT_EQ(LJournalEntryAccountFromColumn("  6410 - Loyer"), "6410");
  EXPECT_EQ(LJournalEntryAccountFromColumn("6410\tLoyer"), "6410");
  EXPECT_EQ(LJournalEntryAccountFromColumn("6410-Loyer"), "6410-Loyer");
  EXPECT_EQ(LJournalEntryTypeText(9), "General");
}

TEST_F(JournalEntryTest, LinkedAccountCheck) {
  EXPECT_FALSE(LDefAccountListNeedsUpdate(profile_));
  SetMisc("Options", "DefAccount6Number", "2999");  // names no account
  // Slot 6 counts only when tax paid is tracked.
  EXPECT_FALSE(LDefAccountListNeedsUpdate(profile_));
  SetMisc("Tax", "TrackTaxPaid", "1");
  EXPECT_TRUE(LDefAccountListNeedsUpdate(profile_));

  LNeededAccountsDlg dialog;
  dialog.Fill(profile_);
  EXPECT_EQ(dialog.Slot(1).number, "1150");
  EXPECT_EQ(dialog.Slot(6).description, "");
  std::string message;
  EXPECT_FALSE(dialog.CmOk(profile_, &message));
  dialog.Slot(6).description = "Taxe payée";
  ASSERT_TRUE(dialog.CmOk(profile_, &message));
  EXPECT_FALSE(LDefAccountListNeedsUpdate(profile_));
  LAccount created;
  ASSERT_TRUE(LAccountList(profile_).Open(created, "2999"));
  EXPECT_EQ(created.GetType(), kAccountLiability);
  EXPECT_EQ(created.GetClassification(), kClassificationOperating);
  EXPECT_EQ(LDefAccountSlotFromName("Comptes fournisseurs"), 7);
  EXPECT_EQ(LDefAccountSlotsForType(kAccountLiability), (std::vector<int>{5, 6, 7}));
}

TEST_F(JournalEntryTest, RenumberingCountsWhatItRewrote) {
  LFixedAsker yes(true);
  for (int d = 1; d <= 3; ++d) {
    LJournalEntryDlg dialog = Rent(yes, LDate::Today().AddDays(-d), 100 * d);
    std::string message;
    ASSERT_TRUE(dialog.CmOk(&message));
  }
  LLedgerTransaction other(LDate::Today().AddDays(-1).ToText(), "O", "General");
  other.AddLine("6420", "x", 1, "", "", "");
  other.AddLine("1120", "x", -1, "", "", "");
  ASSERT_TRUE(LAccountTransactionRecord(profile_, other));
  LAccountRenumberProcess data{&profile_, "6410", "6415"};
  LProcessInterfaceVoid process;
  ASSERT_EQ(Process(process, data), kProcessFinished);
  EXPECT_EQ(data.nRowsChanged, 3);
  EXPECT_EQ(data.nDayFilesChanged, 3);
  EXPECT_EQ(Total("6415"), 600);
  LLedgerTransaction loaded;
  ASSERT_TRUE(LLedgerTransactionLoad(profile_, loaded, LDate::Today().AddDays(-1).ToText(), "O"));
  EXPECT_EQ(loaded.Lines().front().account, "6420");
}

}  // namespace
