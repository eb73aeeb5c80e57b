// The web server of the service engine (LWebControl): the route table of the application
// (WebScriptArray and the logon routes), the static files of the "Web" folder, and starting or
// stopping the server with the log lines the service shows.
#pragma once

#include <string>

#include "llib/web/weblet.h"

class LWebControl {
 public:
  // Installs the routes (again, in front of earlier copies), brings the "Web" folder up to date,
  // logs "Démarrage du serveur Web (Non sécurisé)" ("(Sécurisé)" with HTTPS) and starts the
  // listener on the configured port (stopping a listener still running first).
  void Start();
  // Stops the listener and every connection ("Arrêt du serveur Web (Non sécurisé)").
  void Stop();
  bool IsRunning() const { return server_.IsRunning(); }
  bool IsListening() const { return server_.IsListening(); }
  bool HasBindConflict() const { return server_.HasBindConflict(); }
  bool IsSecure() const { return server_.IsRunning() && server_.IsSecure(); }

 private:
  LWebletServer server_;
};

// Installs every route of the application.
void LWebControlInstallRoutes();

// Copies each file of sourceFolder (sub-folders included) into webFolder when it is missing
// there or older. Returns the number of files copied.
int LWebInstallStaticFiles(const std::string& sourceFolder, const std::string& webFolder);
// Where the static files are shipped, relative to the folder of the program.
inline constexpr std::string_view kWebStaticFilesFolder = "share/kontavo/web";
// The static files shipped with the program: "share/kontavo/web" beside the program's folder
// (installed) or inside it (a build folder).
std::string LWebStaticFilesSource();
