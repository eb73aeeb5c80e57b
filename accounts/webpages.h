// The web pages of the ledger side: their routes and the tabs of their sections (bills, bill
// payments, accounts, journal, reports). The route table of the application installs the whole
// side with one call; a new ledger-side page adds its routes to the table in webpages.cpp.
#pragma once

// Installs the routes and tabs of the ledger side (again, in front of earlier copies).
void LAccountsInstallWebPages();
