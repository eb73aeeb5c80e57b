// kontavo web status|enable|disable|port N: the "WebServer" settings; a running service is
// told to restart its web server.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "llib/gen/serviceengine.h"
#include "llib/web/weblet.h"
#include "llib/web/webrouting.h"
#include "llib/gen/jsontext.h"

namespace {

void ReportRestart(LCliContext& context, bool restarted) {
  if (restarted && !context.json) context.out << "Le service en cours d'exécution a redémarré le serveur Web.\n";
}

int Status(LCliContext& context) {
  bool enabled = LWebletServer::IsWebletServerEnabled();
  int port = LWebletServer::GetWebletServerPort();
  bool running = LServiceEngineIsRunning();
  std::string address = LWebRoutingLocalAddress();
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"enabled", enabled},
                                   {"port", port},
                                   {"publicEnabled", LWebletServer::IsPublicWebletServerEnabled()},
                                   {"publicPort", LWebletServer::GetWebletServerPublicPort()},
                                   {"address", address},
                                   {"serviceRunning", running}}))
                << "\n";
    return kExitOk;
  }
  context.out << "Serveur Web : " << (enabled ? "activé" : "désactivé") << "\n"
              << "Port : " << port << "\n"
              << "Adresse : " << address << "\n"
              << "Service : " << (running ? "en cours d'exécution" : "arrêté") << "\n";
  return kExitOk;
}

}  // namespace

int LCmdWeb(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() == 1 && words[0] == "status") return Status(context);
  if (words.size() == 1 && (words[0] == "enable" || words[0] == "disable")) {
    ReportRestart(context, LWebletServer::EnableWebletServer(words[0] == "enable"));
    return kExitOk;
  }
  if (words.size() == 2 && words[0] == "port") {
    int port = 0;
    if (!LWebletServer::ParseWebletServerPort(words[1], port)) return context.Fail(kWebletBadPortMessage);
    ReportRestart(context, LWebletServer::SetWebletServerPort(port));
    return kExitOk;
  }
  return context.Usage();
}
