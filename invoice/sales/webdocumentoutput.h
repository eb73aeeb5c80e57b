// What goes out of a sales document from the web pages: its printable view and its PDF, the
// receipt, packing slip and shipping label PDFs, the document's history and the business's log
// of printing and mailing, and its sending by e-mail, one at a time or a selection of a list.
//
//   invoiceprintview      the printable HTML view (?kind=invoice|quote|order|creditnote|porder&id=)
//                         with the links to its PDF, to e-mail it and to its history
//   generatepdf           the document's PDF (?kind=&id=[&form=NAME][&facturx=1]), printed by
//                         the same routine as "kontavo invoice pdf"
//   receiptsaveaspdf      the receipt of a payment (?id=)
//   packingslipsaveaspdf  the packing slip of an invoice, or of an order with kind=order (?id=)
//   shiplabelsaveaspdf    its shipping label
//   shiplabelinstructions how to print and stick the label, with its link
//   invoicelog            one document's history: created, recorded, printed, e-mailed, by whom
//                         and when, and the state of its last e-mail
//   invoiceprintlog       every printing and e-mail of the business's documents, latest first
//   recordemailinfo       the e-mail dialog: recipients, subject and text prefilled from the
//                         options, the PDF attached; sends at once and tells what the server said
//   recordemailfromlist   e-mails the documents selected in a list ("sel_KEY" parameters), each
//                         to its customer, through the service's background sender and its
//                         retries; the list then shows each document's e-mail state
#pragma once

// Installs the routes above.
void LSalesInstallDocumentOutputPages();
