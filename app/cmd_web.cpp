// kontavo web status|enable|disable|port N|https on|off: the "WebServer" settings; a running
// service is told to restart its web server.
#include <nlohmann/json.hpp>
#include <filesystem>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "llib/gen/serviceengine.h"
#include "llib/net/tlsserver.h"
#include "llib/web/weblet.h"
#include "llib/web/weblettls.h"
#include "llib/web/webrouting.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/log.h"

namespace {

void ReportRestart(LCliContext& context, bool restarted) {
  if (restarted && !context.json) context.out << "Le service en cours d'exécution a redémarré le serveur Web.\n";
}

int ReportChange(LCliContext& context, LWebletSettingChange change) {
  if (change == LWebletSettingChange::kNotStored) return context.Fail(kWebSettingNotStored);
  ReportRestart(context, change == LWebletSettingChange::kRestarted);
  return kExitOk;
}

int Status(LCliContext& context) {
  bool enabled = LWebletServer::IsWebletServerEnabled();
  int port = LWebletServer::GetWebletServerPort();
  bool running = LServiceEngineIsRunning();
  std::string address = LWebRoutingLocalAddress();
  bool secure = LWebletIsSecure();
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"enabled", enabled},
                                   {"port", port},
                                   {"https", secure},
                                   {"certificate", secure ? LWebletCertificateFile() : ""},
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
              << "HTTPS : " << (secure ? "activé (certificat " + LWebletCertificateFile() + ")" : "désactivé") << "\n"
              << "Service : " << (running ? "en cours d'exécution" : "arrêté") << "\n";
  return kExitOk;
}

// web https on [--cert PEM --key PEM] | off. A certificate given is loaded before it is stored,
// and the server's own one is made at once, so that a refusal comes here rather than in the log.
int Https(LCliContext& context, LCliArgs& args) {
  std::string certFile, keyFile, error;
  bool hasCert = args.TakeOption("--cert", certFile);
  bool hasKey = args.TakeOption("--key", keyFile);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (words.size() != 2 || (words[1] != "on" && words[1] != "off") || hasCert != hasKey ||
      (words[1] == "off" && hasCert))
    return context.Usage();
  if (words[1] == "off") {
    if (!LWebletSetSecure(false, {}, {})) return context.Fail(kWebSettingNotStored);
    ReportRestart(context, LServiceEngineSendControl(kServiceControlRestart));
    return kExitOk;
  }
  if (hasCert) {
    // The service may run from another folder: the settings keep whole paths.
    std::error_code ignored;
    certFile = std::filesystem::absolute(certFile, ignored).string();
    keyFile = std::filesystem::absolute(keyFile, ignored).string();
    std::string why;
    if (LTlsServerContext::Load(certFile, keyFile, why) == nullptr)
      return context.Fail("Le certificat du serveur Web ne peut pas être utilisé : " + why);
  }
  if (!LWebletSetSecure(true, certFile, keyFile)) return context.Fail(kWebSettingNotStored);
  if (LWebletLoadTls(error) == nullptr) {
    // The refusal is what the user must read; a failed switch back is only logged.
    if (!LWebletSetSecure(false, {}, {})) LLogError("%s", std::string(kWebSettingNotStored).c_str());
    return context.Fail(error);
  }
  if (!context.json) context.out << "Certificat : " << LWebletCertificateFile() << "\n";
  ReportRestart(context, LServiceEngineSendControl(kServiceControlRestart));
  return kExitOk;
}

}  // namespace

int LCmdWeb(LCliContext& context, LCliArgs& args) {
  if (LCliPeekVerb(args, {"--cert", "--key"}) == "https") return Https(context, args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (words.size() == 1 && words[0] == "status") return Status(context);
  if (words.size() == 1 && (words[0] == "enable" || words[0] == "disable")) {
    return ReportChange(context, LWebletServer::EnableWebletServer(words[0] == "enable"));
  }
  if (words.size() == 2 && words[0] == "port") {
    int port = 0;
    if (!LWebletServer::ParseWebletServerPort(words[1], port)) return context.Fail(kWebletBadPortMessage);
    return ReportChange(context, LWebletServer::SetWebletServerPort(port));
  }
  return context.Usage();
}
