// kontavo desk [--no-open]: the desk in the browser. The service is started when it does not
// answer, then the browser opens on a one-time logon link (printed instead with --no-open, or
// when no browser can be started).
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "llib/gen/openbrowser.h"
#include "llib/gen/processworker.h"
#include "llib/web/deskstart.h"

int LCmdDesk(LCliContext& context, LCliArgs& args) {
  bool noOpen = args.TakeFlag("--no-open");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;

  int port = 0;
  LDeskStart started = LWebDeskStartService(LCurrentExecutablePath(), port);
  if (started != LDeskStart::kReady) {
    std::string page;
    if (!noOpen && LWebDeskWriteProblemPage(started, port, page)) (void)LOpenInBrowser("file://" + page);
    return context.Fail(LWebDeskProblemText(started, port));
  }
  std::string link;
  if (!LWebDeskMakeLink(port, link)) return context.Fail("Impossible d'écrire le lien d'ouverture de session.");
  if (noOpen || !LOpenInBrowser(link)) context.out << link << "\n";
  return kExitOk;
}
