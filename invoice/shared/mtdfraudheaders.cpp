#include "invoice/shared/mtdfraudheaders.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <pwd.h>
#include <unistd.h>
#include <netinet/in.h>
#include <sys/utsname.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "invoice/shared/mtdvat.h"
#include "llib/gen/log.h"
#include "llib/gen/percent.h"
#include "llib/gen/system.h"
#include "llib/gen/usersettings.h"

namespace {

std::string FirstLineOf(const std::string& path) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
  return line;
}

std::string Join(const std::vector<std::string>& values) {
  std::string out;
  for (const auto& value : values) {
    if (value.empty()) continue;
    if (!out.empty()) out += ",";
    out += LPercentEncode(value);
  }
  return out;
}

std::string DeviceId() {
  std::string id = LUserSettingGetString(kMTDSettingsGroup, "DeviceID");
  if (!id.empty()) return id;
  std::random_device random;
  unsigned char bytes[16];
  for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
  char text[37];
  std::snprintf(text, sizeof text, "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", bytes[0],
                bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8], bytes[9], bytes[10],
                bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
  // Unremembered, the next request names another device: HMRC takes it, the log says why.
  if (!LUserSettingSetString(kMTDSettingsGroup, "DeviceID", text)) LLogWarning("MTD: the device id could not be stored");
  return text;
}

std::vector<std::string> LocalAddresses() {
  std::vector<std::string> addresses;
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return addresses;
  for (ifaddrs* entry = list; entry; entry = entry->ifa_next) {
    if (!entry->ifa_addr || (entry->ifa_flags & IFF_LOOPBACK)) continue;
    char text[INET6_ADDRSTRLEN] = "";
    int family = entry->ifa_addr->sa_family;
    if (family == AF_INET)
      ::inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(entry->ifa_addr)->sin_addr, text, sizeof text);
    else if (family == AF_INET6)
      ::inet_ntop(AF_INET6, &reinterpret_cast<sockaddr_in6*>(entry->ifa_addr)->sin6_addr, text, sizeof text);
    if (text[0]) addresses.emplace_back(text);
  }
  ::freeifaddrs(list);
  return addresses;
}

std::vector<std::string> MacAddresses() {
  std::vector<std::string> addresses;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/sys/class/net", error)) {
    std::string mac = FirstLineOf(entry.path().string() + "/address");
    if (mac.size() == 17 && mac != "00:00:00:00:00:00") addresses.push_back(mac);
  }
  return addresses;
}

std::string UtcTimestampMs() {
  auto now = std::chrono::system_clock::now();
  std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  int ms = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000);
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900, utc.tm_mon + 1,
                utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, ms);
  return text;
}

std::string Timezone() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  long offset = local.tm_gmtoff;
  char sign = offset < 0 ? '-' : '+';
  if (offset < 0) offset = -offset;
  char text[48];
  std::snprintf(text, sizeof text, "UTC%c%02ld:%02ld", sign, offset / 3600, (offset % 3600) / 60);
  return text;
}

std::string UserAgent() {
  utsname system{};
  ::uname(&system);
  return "os-family=" + LPercentEncode(system.sysname) + "&os-version=" + LPercentEncode(system.release) +
         "&device-manufacturer=" + LPercentEncode(FirstLineOf("/sys/class/dmi/id/sys_vendor")) +
         "&device-model=" + LPercentEncode(FirstLineOf("/sys/class/dmi/id/product_name"));
}

void AddHeader(std::string& out, const char* name, const std::string& value) {
  if (!value.empty()) out += std::string(name) + ": " + value + "\r\n";
}

}  // namespace

std::string FKMTDFraudPreventionHeaders() {
  std::string headers = "Gov-Client-Connection-Method: DESKTOP_APP_DIRECT\r\n";
  AddHeader(headers, "Gov-Client-Device-ID", DeviceId());
  std::string localIps = Join(LocalAddresses());
  AddHeader(headers, "Gov-Client-Local-IPs", localIps);
  if (!localIps.empty()) AddHeader(headers, "Gov-Client-Local-IPs-Timestamp", UtcTimestampMs());
  AddHeader(headers, "Gov-Client-MAC-Addresses", Join(MacAddresses()));
  AddHeader(headers, "Gov-Client-Timezone", Timezone());
  AddHeader(headers, "Gov-Client-User-Agent", UserAgent());
  std::string user = LGetPostingUserName();
  if (user.empty()) {
    // A session without LOGNAME or USER (a service, a container) still has a login name.
    if (const passwd* entry = ::getpwuid(::getuid())) user = entry->pw_name;
  }
  AddHeader(headers, "Gov-Client-User-IDs", user.empty() ? std::string() : "os=" + LPercentEncode(user));
  AddHeader(headers, "Gov-Vendor-Product-Name", LPercentEncode(kKontavoProductName));
  AddHeader(headers, "Gov-Vendor-Version",
            LPercentEncode(kKontavoProductName) + "=" + LPercentEncode(kKontavoVersion));
  return headers;
}
