#include "app/mainengine.h"

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/web/webjob.h"
#include "llib/web/weblet.h"
#include "llib/net/emailsendbg.h"

namespace {
constexpr unsigned kRestartListenWaitMs = 3000;
constexpr unsigned kStopJobsWaitMs = 600000;  // a restore of large books
}  // namespace

void MainEngine::StartWebServer() {
  if (!LWebletServer::IsWebletServerEnabled()) return;
  web_.Start();
}

void MainEngine::Start() {
  std::lock_guard<std::mutex> lock(mutex_);
  LLogInfo("Démarrage du moteur du serveur...");
  if (!LWebletServer::IsWebletServerEnabled()) return;
  LLogInfo("Démarrage du serveur Web...");
  StartWebServer();
}

void MainEngine::Stop() {
  std::lock_guard<std::mutex> lock(mutex_);
  LLogInfo("Arrêt du moteur du serveur");
  LSendEmailBackgroundStopSoon();
  // A restore started by a page must not be cut while it moves the data root: the engine ends
  // once the pages' jobs have.
  if (!LWebJobWaitAll(kStopJobsWaitMs)) LLogWarning("Arrêt du moteur avec une opération de page encore en cours.");
  web_.Stop();
  LSendEmailBackgroundStopNow();
}

void MainEngine::CtlRestart() {
  std::lock_guard<std::mutex> lock(mutex_);
  web_.Stop();
  if (!LWebletServer::IsWebletServerEnabled()) return;
  LLogInfo("Redémarrage du serveur Web");
  StartWebServer();
  // The command that asked for the restart hears back once the new listener accepts, so the
  // address it prints works at once; a port held by another program does not hold it longer.
  for (unsigned waited = 0; !web_.IsListening() && waited < kRestartListenWaitMs; waited += 10) LSleepMs(10);
}

bool MainEngine::Control(int code, const void* data, std::size_t size) {
  if (code == kServiceControlRestart) {
    CtlRestart();
    return true;
  }
  if (code == kServiceControlWebOff) {
    std::lock_guard<std::mutex> lock(mutex_);
    web_.Stop();
    return true;
  }
  if (code == kServiceControlWebListening) return IsListening();
  if (code == kServiceControlWebPortTaken) {
    std::lock_guard<std::mutex> lock(mutex_);
    return web_.HasBindConflict();
  }
  return LServiceEngine::Control(code, data, size);
}

bool MainEngine::IsListening() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return web_.IsListening();
}

bool MainEngine::IsSecure() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return web_.IsSecure();
}
