// MainEngine: the service engine of Kontavo, run in the foreground by `kontavo serve`. It hosts
// the web server (when "WebServer"/"Enabled" is on) and the background e-mail sender, and
// answers the restart control that `kontavo web enable|disable|port` sends after changing the
// settings.
#pragma once

#include <mutex>

#include "app/webcontrol.h"
#include "llib/gen/serviceengine.h"

class MainEngine : public LServiceEngine {
 public:
  // "Démarrage du moteur du serveur...", then the web server when enabled.
  void Start() override;
  // "Arrêt du moteur du serveur", the e-mail sender asked to stop, the web server stopped, the
  // e-mail sender stopped at once.
  void Stop() override;
  // Code 1 restarts the web server, code 2 stops it until the next restart, code 3 answers
  // whether it accepts connections and code 4 whether another program holds its port; other
  // codes go to the engine base.
  bool Control(int code, const void* data, std::size_t size) override;
  // Stops the web server when it runs and starts it again when it is enabled.
  void CtlRestart();
  // The web server accepts connections.
  bool IsListening() const;
  // The web server runs with HTTPS.
  bool IsSecure() const;

 private:
  void StartWebServer();

  mutable std::mutex mutex_;  // Start, Stop and controls do not overlap
  LWebControl web_;
};
