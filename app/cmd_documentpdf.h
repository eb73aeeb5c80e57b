// kontavo invoice|quote|order|creditnote|porder pdf KEY [--out FILE] [--facturx [--profile
// en16931|basic]]: the verb "pdf" of the document commands (app/cmd_document.cpp hands it over).
#pragma once

class LCliArgs;
class LCliContext;
struct LSalesDocumentKind;

// Writes the printed form of the document named by the words "pdf KEY" to --out, by default
// "Facture-KEY.pdf" (and the like) in the current folder, and prints the file's path; --json:
// {"path": PATH}. A logo that could not be drawn is reported on stderr, the PDF still written.
int LCmdDocumentPdf(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind);
