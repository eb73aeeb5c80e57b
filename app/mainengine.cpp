#include "app/mainengine.h"

#include "llib/gen/log.h"
#include "llib/web/weblet.h"
#include "llib/net/emailsendbg.h"

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
  web_.Stop();
  LSendEmailBackgroundStopNow();
}

void MainEngine::CtlRestart() {
  std::lock_guard<std::mutex> lock(mutex_);
  web_.Stop();
  if (!LWebletServer::IsWebletServerEnabled()) return;
  LLogInfo("Redémarrage du serveur Web");
  StartWebServer();
}

bool MainEngine::Control(int code, const void* data, std::size_t size) {
  if (code == kServiceControlRestart) {
    CtlRestart();
    return true;
  }
  return LServiceEngine::Control(code, data, size);
}

bool MainEngine::IsListening() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return web_.IsListening();
}
