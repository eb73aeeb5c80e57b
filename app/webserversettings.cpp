// Route "settingsweb": the web server's switch and port, stored as `kontavo web enable|disable|
// port` store them. The page is served by the very server it restarts, so the restart is asked
// for once its answer has left, and the browser is sent to the new port.
#include "app/websettings.h"
#include "llib/gen/serviceengine.h"
#include "llib/web/weblet.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webrouting.h"

namespace {

constexpr int kEnabledControl = 101;
constexpr int kPortControl = 102;

// The host the browser reached this page by, without its port.
std::string RequestHost(LWebletForm& form) {
  const char* header = form.GetHeader("Host");
  std::string host = header != nullptr ? header : "127.0.0.1";
  std::size_t colon = host.rfind(':');
  if (colon != std::string::npos && host.find(']', colon) == std::string::npos) host.resize(colon);
  return host;
}

}  // namespace

LWebServerSettingsDialog::LWebServerSettingsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingsweb", "serveur Web") {}

void LWebServerSettingsDialog::InitDialog() {
  SetCheck(kEnabledControl, LWebletServer::IsWebletServerEnabled());
  SetInt(kPortControl, LWebletServer::GetWebletServerPort());
}

void LWebServerSettingsDialog::Generate() {
  AddCheckBox(kEnabledControl, "Serveur Web activé (accès des collègues et du comptable par le navigateur)");
  AddInput(kPortControl, "Port :", "", 6);
  AddStaticSmall("Adresse sur le réseau local : " + LWebRoutingLocalAddress());
  AddStaticSmall("Service : " + std::string(LServiceEngineIsRunning() ? "en cours d'exécution" : "arrêté"));
  AddStaticSmall("Le serveur Web redémarre quand ces réglages changent ; le désactiver ferme aussi cette page.");
}

bool LWebServerSettingsDialog::CmOk() {
  int port = 0;
  if (!LWebletServer::ParseWebletServerPort(GetTextAndTrim(kPortControl), port)) {
    PopupControlDataInvalid(kPortControl, kWebletBadPortMessage);
    return false;
  }
  bool enabled = IsChecked(kEnabledControl);
  if (!LWebletServer::SetWebletServerSettingsSoon(enabled, port)) {
    PopupBoxError(std::string(kWebSettingNotStored));
    return false;
  }
  if (enabled)
    // The new listener answers a moment later: the browser asks for a small file there until it
    // does, then goes.
    WriteAnswerScript(LWebFormat("(function () { var url = 'http://%s:%d/';\n"
                                 "function tryIt() { var image = new Image();\n"
                                 "image.onload = function () { window.location = url + 'settingsweb'; };\n"
                                 "image.onerror = function () { setTimeout(tryIt, 300); };\n"
                                 "image.src = url + 'favicon.ico?' + Date.now(); }\n"
                                 "setTimeout(tryIt, %u); })();\n",
                                 LJScriptEscape(RequestHost(form_)).c_str(), port, kWebletRestartSoonMs * 2));
  else
    WriteAnswerScript("window.location = 'settingsmenu';\n");
  SetAnswerWritten();
  return true;
}
