// The verbs "send" and "log" of the sales document commands: kontavo KIND send KEY [--to
// ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx | --no-facturx] e-mails the document's
// PDF (a progress bar on a terminal) and prints the recipients; kontavo KIND log KEY prints the
// document's history, one event a line: time, user, action, detail (tab-separated), then its
// e-mail state; --json: {"events":[{"time","user","action","detail"}], "emailState", "emailError"}.
#pragma once

class LCliArgs;
class LCliContext;
struct LSalesDocumentKind;

int LCmdDocumentSend(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind);
int LCmdDocumentLog(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind);
