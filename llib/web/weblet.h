// The "weblet" server: the small HTTP/1.1 server through which remote users work with the
// business in a browser. It runs inside the service engine, not in a desk process.
//
// Settings, in the per-user settings group "WebServer" (texts; "1"/"0" for switches, an empty
// value or "0" counting as off): "Enabled" (default off), "PublicEnabled" (off), "Port" (1098
// whenever the stored value is 0 or missing), "PublicPort" (the value of "Port" when 0),
// "AutoRouting" (off). Changing "Enabled" or "Port" tells a running service to restart the
// server.
//
// LWebletServerListener is the listening thread: it binds the port on every interface, retries
// every few seconds while another program holds it (a "bind conflict"), and hands each accepted
// client to a detached connection thread (llib/web/webletconnection.h).
#pragma once

#include <atomic>
#include <memory>
#include <string_view>

#include "llib/gen/thread.h"

class LWebletConnectionRegistry;
class LTlsServerContext;

inline constexpr int kWebletDefaultPort = 1098;
inline constexpr std::string_view kWebletBadPortMessage = "Numéro de port non valide.";
inline constexpr unsigned kWebletBindRetryMs = 5000;
inline constexpr unsigned kWebletStopConnectionsMs = 15000;
inline constexpr unsigned kWebletRestartSoonMs = 300;  // the page's answer leaves meanwhile

class LWebletServerListener : public LThread {
 public:
  // tls: the HTTPS certificate (llib/web/weblettls.h); null: plain HTTP only.
  LWebletServerListener(int port, std::shared_ptr<const LTlsServerContext> tls);
  ~LWebletServerListener() override;

  // Stops accepting, then stops every connection of this listener and waits for them.
  void Stop();
  bool IsListening() const { return listening_; }
  bool HasBindConflict() const { return bindConflict_; }
  int Port() const { return port_; }

 protected:
  void ThreadMain() override;

 private:
  void AcceptUntilStopped(int listenFd);

  int port_;                                              // TCP port to bind
  std::shared_ptr<LWebletConnectionRegistry> registry_;   // this listener's connections
  std::atomic<bool> listening_{false};                    // bound and accepting
  std::atomic<bool> bindConflict_{false};                 // the port is held by another program
};

inline constexpr std::string_view kWebSettingNotStored = "Impossible d'enregistrer le réglage du serveur Web.";

// What became of a change of the server's settings.
enum class LWebletSettingChange {
  kNotStored,  // the setting could not be written
  kStored,     // written (or unchanged); no running service took a restart
  kRestarted,  // written, and the running service restarted the server
};

class LWebletServer {
 public:
  // ---- Settings ----------------------------------------------------------------------------
  static bool IsWebletServerEnabled();
  static bool IsPublicWebletServerEnabled();
  // "Port"; 1098 when 0 or missing.
  static int GetWebletServerPort();
  // "PublicPort"; "Port" when 0 or missing.
  static int GetWebletServerPublicPort();
  static bool IsAutoRouting();
  // A port as it may be stored: decimal 1 to 65535, no sign, no leading zero. false (port
  // unchanged) otherwise; the user is then told kWebletBadPortMessage.
  static bool ParseWebletServerPort(std::string_view text, int& port);
  // Stores the port as "%d" when it differs from the current one and tells a running service to
  // restart: whether the setting could not be stored, was stored, or a running service also
  // took the restart.
  [[nodiscard]] static LWebletSettingChange SetWebletServerPort(int port);
  // Store "1" or "0" and tell a running service to restart, as above.
  [[nodiscard]] static LWebletSettingChange EnableWebletServer(bool on);
  // false when the setting could not be stored.
  [[nodiscard]] static bool EnablePublicWebletServer(bool on);
  // For a page served by the server itself: stores "Enabled" and "Port" as the two above do,
  // then tells a running service to restart a moment later from a thread of its own, once the
  // page has answered (the restart stops every connection, the asking one with them). false,
  // nothing restarted, when the settings could not be stored.
  [[nodiscard]] static bool SetWebletServerSettingsSoon(bool enabled, int port);

  // ---- The server of this process ------------------------------------------------------------
  LWebletServer() = default;
  ~LWebletServer();
  LWebletServer(const LWebletServer&) = delete;
  LWebletServer& operator=(const LWebletServer&) = delete;

  // Stops a listener that is still running (and waits for it), then listens on port: with HTTPS
  // when "Secure" is on and its certificate loads (a certificate that cannot be used is logged
  // and the server then serves the loopback only, in plain text).
  void StartServer(int port);
  // Restarts the listener on the configured port with the log line "Démarrage du serveur Web
  // (Non sécurisé)" or "Redémarrage du serveur Web (Non sécurisé)", or stops it when the server
  // is disabled.
  void UpdateServerUnsecure();
  // Stops the listener and all its connections; logs "Arrêt du serveur Web (Non sécurisé)" (or
  // "(Sécurisé)" for HTTPS) when one was running.
  void StopServer();
  // The running listener speaks HTTPS.
  bool IsSecure() const { return secure_; }
  bool IsRunning() const { return listener_ != nullptr; }
  bool IsListening() const { return listener_ != nullptr && listener_->IsListening(); }
  // Another program holds the port; the listener keeps trying.
  bool HasBindConflict() const { return listener_ != nullptr && listener_->HasBindConflict(); }

 private:
  std::unique_ptr<LWebletServerListener> listener_;  // null while stopped
  bool secure_ = false;                              // the listener has a certificate
};
