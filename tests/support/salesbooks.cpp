#include "tests/support/salesbooks.h"

#include <gtest/gtest.h>

#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "invoice/sales/salesposting.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"

std::set<LPosting> LExpectPostedAsBuilt(LProfile& profile, std::string_view list) {
  std::set<LPosting> places;
  LSalesDocument document;
  for (LFileStoreIteratorBase it(profile.MainList(list), document); document.IsAttached(); it.Next(document)) {
    std::string reference = document.GetString("JournalTxnRef");
    EXPECT_FALSE(reference.empty()) << list << " " << document.GetPrimaryKey() << " was never posted";
    LLedgerTransaction built, posted;
    if (list == kPaymentsList) LPaymentBuildTransaction(profile, document, reference, "", built);
    else LSalesDocumentBuildTransaction(profile, document, list == "CreditNotes", document.GetDate(), reference, "", built);
    EXPECT_TRUE(LLedgerTransactionLoad(profile, posted, document.GetDate(), reference));
    EXPECT_TRUE(LLedgerTransactionEqual(posted, built)) << list << " " << document.GetPrimaryKey();
    bool unique = places.insert({document.GetDate(), reference}).second;
    EXPECT_TRUE(unique) << list << " " << document.GetPrimaryKey() << " shares its posting " << reference;
  }
  document.Invalidate();
  return places;
}

std::set<LPosting> LPostingsOfType(const LProfile& profile, std::string_view type) {
  std::set<LPosting> places;
  LLedgerAccountLineIterator it(profile, "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine())
    if (it.line.type == type) places.insert({it.line.date, it.line.reference});
  return places;
}
