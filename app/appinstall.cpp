#include "app/appinstall.h"

#include "invoice/sales/salesledger.h"

void LAppInstall() { LSalesLedgerInstall(); }
