// The VAT return pages, for administrators, beside the report centre (tab "reports"). The page
// "vatreturn" is the return of the business's country: for a business in the United Kingdom the
// return through HMRC, for any other the figures of the French return (CA3).
//
// HMRC (the same routines as `kontavo vat`, invoice/shared/vatreturnsteps.h):
//   vatreturn       the settings in force, the authorization, the stored obligations, each open
//                   one with its return to fill in and each fulfilled one with its return to view
//   vatsettings     the VAT registration number and the API address
//   vatauth         the authorize page to open at HMRC and the code it shows, pasted back; a
//                   redirect that reaches this server with "code" in its address is taken as is
//   vatobligations  fetches the obligations (the fixed query, or "from" and "to") and shows them
//   vatsubmit       ?period=KEY: the nine boxes, prefilled from the running figures and each
//                   editable; sent with "submit", after the declaration is ticked
//   vatview         ?period=KEY: a submitted return as HMRC gives it back
// Each outcome of HMRC's side is shown with its caption and message word for word.
//
// France: vatreturn shows the CA3 figures of a month or a quarter (accounts/ca3.h), each line with
// its sources, and links to the report's CSV and PDF.
#pragma once

// The routes above.
void LSalesInstallVatReturnPages();
