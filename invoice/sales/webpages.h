// The web pages of the sales side: their routes and the tabs of their sections (customers,
// quotes, orders, invoices, credit notes, payments, suppliers, purchase orders, items). The
// route table of the application installs the whole side with one call; a new sales-side page
// adds its routes to the table in webpages.cpp.
#pragma once

// Installs the routes and tabs of the sales side (again, in front of earlier copies).
void LSalesInstallWebPages();
