// The commands that print: the verb "pdf" of the sales documents (invoice, quote, order,
// creditnote, porder) and of payments, and the commands packingslip, shiplabel and statement.
// Each writes a PDF to --out, by default the form's own file name ("Facture-KEY.pdf",
// "Reçu-KEY.pdf", "Bon-de-livraison-KEY.pdf", "Etiquette-KEY.pdf", "Relevé-CUSTOMER.pdf") in the
// current folder, and prints the file's path; --json: {"path": PATH}. A logo that could not be
// drawn is reported on stderr, the PDF still written.
#pragma once

#include <string>

class LCliArgs;
class LCliContext;
struct LPrintedForm;
struct LSalesDocumentKind;

// kontavo KIND pdf KEY [--out FILE] [--form NAME] [--facturx [--profile en16931|basic]] (app/cmd_document.cpp
// hands the words over).
int LCmdDocumentPdf(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind);
// kontavo payment pdf KEY [--out FILE] (app/cmd_payment.cpp hands the words over).
int LCmdPaymentPdf(LCliContext& context, LCliArgs& args);
// Writes form to out (its own file name when out is empty) and says where, as above.
int LCmdWritePrintedForm(LCliContext& context, std::string out, const LPrintedForm& form);
