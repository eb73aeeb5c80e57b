// kontavo serve: the service engine in the foreground (web server and background e-mail), its
// log on stderr, stopped by SIGINT or SIGTERM.
#include <signal.h>

#include <atomic>
#include <iostream>
#include <ostream>
#include <thread>

#include "app/cli.h"
#include "app/commands.h"
#include "app/mainengine.h"
#include "llib/gen/file.h"
#include "llib/gen/textnum.h"
#include "llib/gen/usersettings.h"
#include "llib/web/webaccount.h"
#include "llib/web/weblet.h"
#include "llib/web/webrouting.h"

namespace {

constexpr unsigned kAnnounceWaitMs = 10000;
constexpr unsigned kAnnouncePollMs = 10;

}  // namespace

int LCmdServe(LCliContext& context, LCliArgs& args) {
  std::string portText;
  bool hasPort = args.TakeOption("--port", portText);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (hasPort) {
    int port = LTextToInt(portText);
    if (port <= 0 || port > 65535 || std::to_string(port) != portText) return context.Fail("Numéro de port non valide.");
    if (!LUserSettingSetString("WebServer", "Port", portText)) return context.Fail(kWebSettingNotStored);
  }
  // First use: the service is started to serve the web, so the server starts switched on.
  if (!LUserSettingTestExists("WebServer", "Enabled") && !LUserSettingSetString("WebServer", "Enabled", "1"))
    return context.Fail(kWebSettingNotStored);

  if (LWebAccountCount() == 0)
    context.out << "Aucun compte Web n'existe encore. Créez le premier administrateur :\n"
                << "  kontavo user add ADRESSE --name NOM --admin --password-stdin\n";
  context.out.flush();

  // SIGINT and SIGTERM must reach the engine only: every thread of the process, the announcing
  // one below included, is started with them blocked.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  MainEngine engine;
  std::atomic<bool> ended{false};
  // The address is printed once the listener accepts connections, so that whoever started the
  // service (a person, a script, a test) knows when to open it.
  std::thread announce([&engine, &context, &ended] {
    if (!LWebletServer::IsWebletServerEnabled()) {
      context.out << "Le serveur Web est désactivé : « kontavo web enable » le démarre.\n";
    } else {
      for (unsigned waited = 0; waited < kAnnounceWaitMs && !ended; waited += kAnnouncePollMs) {
        if (engine.IsListening()) {
          context.out << "Kontavo est ouvert à l'adresse http://127.0.0.1:" << LWebletServer::GetWebletServerPort()
                      << "/\n";
          if (engine.IsSecure())
            context.out << "Depuis le réseau : https://" << LWebRoutingLocalAddress() << "/\n";
          break;
        }
        LSleepMs(kAnnouncePollMs);
      }
    }
    context.out.flush();
  });
  bool ran = engine.RunForeground(error);
  ended = true;
  announce.join();
  if (!ran) return context.Fail(error);
  return kExitOk;
}
