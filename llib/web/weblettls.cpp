#include "llib/web/weblettls.h"

#include <algorithm>
#include <vector>

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"
#include "llib/gen/usersettings.h"
#include "llib/net/ipaddress.h"
#include "llib/net/tlsserver.h"
#include "llib/web/webrouting.h"

namespace {

constexpr std::string_view kGroup = "WebServer";

std::string OwnFile(std::string_view name) {
  std::string folder = LFile::GetUserDataFolderApp() + "/tls";
  LFile::MakeFolder(folder, 0700);
  return folder + "/" + std::string(name);
}

// The names colleagues may type to reach this machine.
std::vector<std::string> OwnNames() {
  std::vector<std::string> names = {"localhost", "127.0.0.1"};
  auto add = [&names](const std::string& name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  };
  add(LGetHostName());
  std::string fqdn;
  LIPGetLocalFQDN(fqdn);
  add(fqdn);
  add(LWebRoutingLocalHost());
  return names;
}

}  // namespace

bool LWebletIsSecure() {
  std::string value = LUserSettingGetString(kGroup, "Secure");
  return !value.empty() && value[0] != '0';
}

bool LWebletUsesOwnCertificate() { return LUserSettingGetString(kGroup, "CertificateFile").empty(); }

std::string LWebletCertificateFile() {
  std::string given = LUserSettingGetString(kGroup, "CertificateFile");
  return given.empty() ? OwnFile("cert.pem") : given;
}

std::string LWebletKeyFile() {
  std::string given = LUserSettingGetString(kGroup, "KeyFile");
  return given.empty() || LWebletUsesOwnCertificate() ? OwnFile("key.pem") : given;
}

bool LWebletSetSecure(bool on, const std::string& certFile, const std::string& keyFile) {
  if (!LUserSettingSetString(kGroup, "Secure", on ? "1" : "0")) return false;
  if (!on) return true;
  return LUserSettingSetString(kGroup, "CertificateFile", certFile) && LUserSettingSetString(kGroup, "KeyFile", keyFile);
}

std::shared_ptr<const LTlsServerContext> LWebletLoadTls(std::string& error) {
  std::string certFile = LWebletCertificateFile();
  std::string keyFile = LWebletKeyFile();
  if (LWebletUsesOwnCertificate() && !(LFile::Exists(certFile) && LFile::Exists(keyFile))) {
    std::string why;
    if (!LTlsMakeSelfSignedCertificate(certFile, keyFile, OwnNames(), kWebletSelfSignedDays, why)) {
      error = "Le certificat du serveur Web n'a pas pu être créé : " + why;
      return nullptr;
    }
    LLogInfo("Certificat auto-signé du serveur Web créé : %s", certFile.c_str());
  }
  std::string why;
  std::shared_ptr<const LTlsServerContext> context = LTlsServerContext::Load(certFile, keyFile, why);
  if (context == nullptr) error = "Le certificat du serveur Web ne peut pas être utilisé : " + why;
  return context;
}
