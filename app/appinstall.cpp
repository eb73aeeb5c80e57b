#include "app/appinstall.h"

#include "accounts/accountrenumber.h"
#include "accounts/purchaseintent.h"
#include "invoice/sales/salesledger.h"

void LAppInstall() {
  LSalesLedgerInstall();
  LPurchaseLedgerInstall();
  LAccountRenumberInstall();
}
