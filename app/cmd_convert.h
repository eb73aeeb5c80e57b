// kontavo quote convert KEY / order convert KEY [--draft]: the verb "convert" of the quote and
// order commands (app/cmd_document.cpp hands it over).
#pragma once

class LCliArgs;
class LCliContext;
struct LSalesDocumentKind;

// Converts the quote or order named by the words "convert KEY" into a new invoice (a draft with
// --draft, otherwise recorded and posted) and prints its key; --json: {"key": KEY}.
int LCmdDocumentConvert(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind);
