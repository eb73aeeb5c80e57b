// The composition root of a process. Each layer knows only the layers below it, so a higher
// layer takes part in a lower one's work through hooks installed here, once per process:
//   - the sales side in the ledger's deletes, the checks of the books and the chart of a new
//     business (LSalesLedgerInstall): without it, deleting an invoice's transaction would leave
//     the invoice behind;
//   - the settling of purchase-book changes cut short by a crash (LPurchaseLedgerInstall).
// Every entry point calls it before it opens a business: the command line (and through it the
// service and the worker processes), the helper programs of the tests, the tests' temporary
// homes and the benchmarks. Calling it again changes nothing.
#pragma once

void LAppInstall();
