// Test helper: posts balanced two-line transactions into a business through the ledger's
// posting entry point, as another desk, web thread or worker would at the same time.
//     ledgerposter FOLDER TAG COUNT [DELETE]
// Transaction i is dated on one of three days of 2024 (2024-01-31, 2024-02-01, 2024-02-29 in
// turn), referenced TAG-i, and moves (i + 1) cents from account 1110 + 10 * (i % 3) to 6410 +
// 10 * (i % 2); the test computes the same figures to check what arrived. With DELETE ("delete"),
// every transaction i with i % 4 == 3 is taken out again right after it is posted, so deletions
// run among the postings.
// Exit status 0 when every transaction was recorded, 1 when one was not, 2 on wrong usage.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "app/appinstall.h"
#include "invoice/shared/profile.h"

int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) {
    std::fprintf(stderr, "usage: ledgerposter FOLDER TAG COUNT [DELETE]\n");
    return 2;
  }
  LAppInstall();
  LProfile profile(argv[1]);
  std::string tag = argv[2];
  int count = std::atoi(argv[3]);
  bool deletes = argc == 5 && std::string(argv[4]) == "delete";
  static const char* const kDays[] = {"2024-01-31", "2024-02-01", "2024-02-29"};
  for (int i = 0; i < count; ++i) {
    LLedgerTransaction txn(kDays[i % 3], tag + "-" + std::to_string(i), "General");
    std::string debit = std::to_string(6410 + 10 * (i % 2));
    std::string credit = std::to_string(1110 + 10 * (i % 3));
    txn.AddLine(debit, "Écriture " + tag, i + 1, "poster", "", "");
    txn.AddLine(credit, "Écriture " + tag, -(i + 1), "poster", "", "");
    if (!LAccountTransactionRecord(profile, txn)) return 1;
    if (deletes && i % 4 == 3 && !LAccountTransactionDelete(profile, txn.GetDate(), txn.GetReference())) return 1;
  }
  return 0;
}
