#include "llib/web/deskstart.h"

#include <sys/wait.h>

#include <chrono>
#include <ctime>

#include "llib/gen/file.h"
#include "llib/gen/serviceengine.h"
#include "llib/web/webdesk.h"
#include "llib/web/weblet.h"
#include "llib/web/webformat.h"

namespace {

// Short enough that the desk opens as soon as the service is ready, long enough to leave the
// service the processor it needs to get there.
constexpr unsigned kDeskPollMs = 2;

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Waits until ready() holds; false when waitMs pass, or when the service started here (pid > 0)
// has ended meanwhile.
template <typename Ready>
bool WaitFor(Ready ready, int pid) {
  long long deadline = NowMs() + kDeskServiceWaitMs;
  for (;;) {
    if (ready()) return true;
    if (pid > 0 && ::waitpid(pid, nullptr, WNOHANG) == pid) return false;
    if (NowMs() >= deadline) return false;
    LSleepMs(kDeskPollMs);
  }
}

// A port to propose instead of one that is taken.
int OtherPort(int port) { return port < 65535 ? port + 1 : kWebletDefaultPort + 1; }

std::string ServiceLogPath() { return LFile::GetUserDataFolderApp() + "/" + std::string(kDeskServiceLogName); }

}  // namespace

LDeskStart LWebDeskStartService(const std::string& program, int& port) {
  port = LWebletServer::GetWebletServerPort();
  // A server that could not be switched on would never listen.
  if (!LWebletServer::IsWebletServerEnabled() &&
      LWebletServer::EnableWebletServer(true) == LWebletSettingChange::kNotStored)
    return LDeskStart::kServiceFailed;
  int pid = -1;
  if (!LServiceEngineIsRunning()) {
    if (!LServiceEngineLaunch(program, {"serve"}, ServiceLogPath(), pid)) return LDeskStart::kServiceFailed;
    if (!WaitFor(LServiceEngineIsRunning, pid)) return LDeskStart::kServiceFailed;
  }
  bool portTaken = false;
  bool listening = WaitFor(
      [&portTaken] {
        if (LServiceEngineSendControl(kServiceControlWebListening)) return true;
        portTaken = LServiceEngineSendControl(kServiceControlWebPortTaken);
        return portTaken;
      },
      pid);
  if (portTaken) return LDeskStart::kPortTaken;
  return listening ? LDeskStart::kReady : LDeskStart::kServiceFailed;
}

bool LWebDeskMakeLink(int port, std::string& url) {
  std::string token;
  if (!LWebDeskIssueToken(std::time(nullptr), token)) return false;
  url = "http://127.0.0.1:" + std::to_string(port) + "/" + std::string(kDeskRoute) + "?token=" + token;
  return true;
}

std::string LWebDeskProblemText(LDeskStart problem, int port) {
  if (problem == LDeskStart::kPortTaken)
    return LWebFormat(
        "Kontavo ne peut pas ouvrir son serveur Web : le port TCP %d est déjà utilisé par un autre programme.\n"
        "Choisissez un autre port, par exemple « kontavo web port %d », puis lancez de nouveau « kontavo desk ».",
        port, OtherPort(port));
  return "Le service Kontavo n'a pas pu démarrer. Son journal est dans le fichier " + ServiceLogPath() + ".";
}

bool LWebDeskWriteProblemPage(LDeskStart problem, int port, std::string& path) {
  std::string html = LWebFormat(
      "<!DOCTYPE html><html lang=fr><head><meta charset=utf-8><title>Kontavo ne peut pas démarrer</title>"
      "<style>body{font-family:Arial,sans-serif;margin:40px;max-width:760px}h1{color:#a00000;font-size:20px}"
      "code{background:#eee;padding:2px 6px}</style></head><body><h1>Kontavo ne peut pas démarrer</h1><p>%H</p>",
      LWebDeskProblemText(problem, port).c_str());
  if (problem == LDeskStart::kPortTaken)
    html += LWebFormat(
        "<p>Dans un terminal :</p><p><code>kontavo web port %d</code></p><p><code>kontavo desk</code></p>"
        "<p>Le port choisi est gardé pour les prochains démarrages ; vos collègues utiliseront la nouvelle adresse.</p>",
        OtherPort(port));
  html += "</body></html>\n";
  path = LFile::GetUserDataFolderApp() + "/" + std::string(kDeskProblemPageName);
  return LFile::WriteAllAtomic(path, html);
}
