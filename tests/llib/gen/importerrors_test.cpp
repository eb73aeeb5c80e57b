// The error list of row-wise imports.
#include "llib/gen/importerrors.h"

#include <gtest/gtest.h>

TEST(ImportErrors, FailedRowsAreCountedAndACancelEndsTheImport) {
  LImportErrorList errors;
  EXPECT_TRUE(errors.AddRowResult(1, kProcessFinished, "ignored"));
  EXPECT_TRUE(errors.AddRowResult(12, kProcessFailed, "Client introuvable"));
  EXPECT_TRUE(errors.AddRowResult(12345, kProcessFailed, "Montant invalide"));
  EXPECT_FALSE(errors.AddRowResult(13, kProcessCancelled, "ignored"));
  EXPECT_EQ(errors.GetErrorCount(), 2);
  EXPECT_TRUE(errors.WasCancelled());
  EXPECT_EQ(errors.GetText(),
            "Ligne #0012 : Client introuvable\n"
            "Ligne #12345 : Montant invalide\n"
            "Ligne #0013 : Importation annulée par l'utilisateur\n");
}
