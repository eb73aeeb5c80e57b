#include "llib/web/weblet.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/serviceengine.h"
#include "llib/gen/textnum.h"
#include "llib/gen/usersettings.h"
#include "llib/web/webletconnection.h"
#include "llib/web/webletsocket.h"
#include "llib/web/weblettls.h"

namespace {

constexpr std::string_view kGroup = "WebServer";

bool IsOn(std::string_view key) {
  std::string value = LUserSettingGetString(kGroup, key);
  return !value.empty() && value[0] != '0';
}

LWebletSettingChange StoreAndRestart(std::string_view key, std::string_view value) {
  if (!LUserSettingSetString(kGroup, key, value)) return LWebletSettingChange::kNotStored;
  return LServiceEngineSendControl(kServiceControlRestart) ? LWebletSettingChange::kRestarted
                                                           : LWebletSettingChange::kStored;
}

}  // namespace

// ---- Settings ------------------------------------------------------------------------------------

bool LWebletServer::IsWebletServerEnabled() { return IsOn("Enabled"); }
bool LWebletServer::IsPublicWebletServerEnabled() { return IsOn("PublicEnabled"); }
bool LWebletServer::IsAutoRouting() { return IsOn("AutoRouting"); }

int LWebletServer::GetWebletServerPort() {
  int port = LTextToInt(LUserSettingGetString(kGroup, "Port", "0"));
  return port == 0 ? kWebletDefaultPort : port;
}

int LWebletServer::GetWebletServerPublicPort() {
  int port = LTextToInt(LUserSettingGetString(kGroup, "PublicPort", "0"));
  return port == 0 ? GetWebletServerPort() : port;
}

bool LWebletServer::ParseWebletServerPort(std::string_view text, int& port) {
  int value = LTextToInt(text);
  if (value <= 0 || value > 65535 || std::to_string(value) != text) return false;
  port = value;
  return true;
}

LWebletSettingChange LWebletServer::SetWebletServerPort(int port) {
  if ((port == 0 ? kWebletDefaultPort : port) == GetWebletServerPort()) return LWebletSettingChange::kStored;
  return StoreAndRestart("Port", std::to_string(port));
}

LWebletSettingChange LWebletServer::EnableWebletServer(bool on) { return StoreAndRestart("Enabled", on ? "1" : "0"); }

bool LWebletServer::SetWebletServerSettingsSoon(bool enabled, int port) {
  if (!LUserSettingSetString(kGroup, "Enabled", enabled ? "1" : "0") ||
      !LUserSettingSetString(kGroup, "Port", std::to_string(port)))
    return false;
  std::thread([] {
    LSleepMs(kWebletRestartSoonMs);
    LServiceEngineSendControl(kServiceControlRestart);
  }).detach();
  return true;
}

bool LWebletServer::EnablePublicWebletServer(bool on) {
  return LUserSettingSetString(kGroup, "PublicEnabled", on ? "1" : "0");
}

// ---- The server ----------------------------------------------------------------------------------

LWebletServer::~LWebletServer() {
  if (listener_) listener_->Stop();
}

void LWebletServer::StartServer(int port) {
  if (listener_) listener_->Stop();
  std::shared_ptr<const LTlsServerContext> tls;
  if (LWebletIsSecure()) {
    std::string error;
    tls = LWebletLoadTls(error);
    // Plain text to the network would send passwords in clear: without its certificate the
    // server answers only this machine, which refuses no one who could use it safely.
    if (tls == nullptr) LLogError("%s", error.c_str());
  }
  secure_ = tls != nullptr;
  listener_ = std::make_unique<LWebletServerListener>(port, std::move(tls));
  listener_->Start();
}

void LWebletServer::UpdateServerUnsecure() {
  bool wasRunning = listener_ != nullptr;
  StopServer();
  if (!IsWebletServerEnabled()) return;
  LLogInfo("%s (Non sécurisé)", wasRunning ? "Redémarrage du serveur Web" : "Démarrage du serveur Web");
  StartServer(GetWebletServerPort());
}

void LWebletServer::StopServer() {
  if (!listener_) return;
  LLogInfo("Arrêt du serveur Web (%s)", secure_ ? "Sécurisé" : "Non sécurisé");
  listener_->Stop();
  listener_.reset();
}

// ---- The listener --------------------------------------------------------------------------------

LWebletServerListener::LWebletServerListener(int port, std::shared_ptr<const LTlsServerContext> tls)
    : port_(port),
      registry_(std::make_shared<LWebletConnectionRegistry>(LFile::GetUserDataFolderAppSubFolder("Web"),
                                                            std::move(tls))) {}

LWebletServerListener::~LWebletServerListener() { Stop(); }

void LWebletServerListener::Stop() {
  StopAndWait();
  int left = registry_->StopAll(kWebletStopConnectionsMs);
  if (left > 0) LLogWarning("Le serveur Web s'arrête avec %d connexions encore ouvertes.", left);
}

void LWebletServerListener::ThreadMain() {
  LWebletSetThreadName("WEBL");
  bool conflictLogged = false;
  while (!IsToStop()) {
    int listenFd = LWebletListenSocket(port_);
    if (listenFd < 0) {
      if (!conflictLogged) {
        LLogInfo("Le serveur Web ne peut se mettre en relation avec le port TCP/IP.");
        LLogError("Un autre programme utilise peut-être le port %d.", port_);
        conflictLogged = true;
      }
      bindConflict_ = true;
      StopSignal().Wait(kWebletBindRetryMs);
      continue;
    }
    bindConflict_ = false;
    listening_ = true;
    LLogInfo("Le serveur Web écoute sur le port %d.", port_);
    AcceptUntilStopped(listenFd);
    listening_ = false;
    ::close(listenFd);
  }
}

void LWebletServerListener::AcceptUntilStopped(int listenFd) {
  while (!IsToStop()) {
    pollfd fds[2] = {{listenFd, POLLIN, 0}, {StopSignal().ReadFd(), POLLIN, 0}};
    if (::poll(fds, 2, -1) < 0 && errno != EINTR) return;
    if (fds[1].revents & POLLIN) return;
    if (!(fds[0].revents & POLLIN)) continue;
    sockaddr_in address{};
    socklen_t length = sizeof address;
    int fd = ::accept4(listenFd, reinterpret_cast<sockaddr*>(&address), &length, SOCK_CLOEXEC);
    if (fd < 0) {
      // Out of descriptors: give the open connections a moment to finish rather than spin.
      if (errno == EMFILE || errno == ENFILE) StopSignal().Wait(100);
      continue;
    }
    unsigned char client[4];
    std::memcpy(client, &address.sin_addr.s_addr, 4);
    LWebletConnectionRegistry::StartConnection(registry_, fd, client);
  }
}
