#include "llib/web/webrouting.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include "llib/gen/system.h"
#include "llib/gen/textnum.h"
#include "llib/gen/usersettings.h"
#include "llib/web/weblet.h"

std::string LWebRoutingAddressText(std::string_view address, int port) {
  if (port == 80) return std::string(address);
  return std::string(address) + ":" + std::to_string(port);
}

std::string LWebRoutingLocalHost() {
  if (LTextToInt(LUserSettingGetString("Routing", "LocalAddressMode", "0")) == 1) return LGetHostName();
  std::string found = "127.0.0.1";
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return found;
  for (ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    if (!(entry->ifa_flags & IFF_UP) || (entry->ifa_flags & IFF_LOOPBACK)) continue;
    char text[INET_ADDRSTRLEN] = {};
    auto* address = reinterpret_cast<sockaddr_in*>(entry->ifa_addr);
    if (::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text) != nullptr) {
      found = text;
      break;
    }
  }
  ::freeifaddrs(list);
  return found;
}

std::string LWebRoutingLocalAddress() {
  return LWebRoutingAddressText(LWebRoutingLocalHost(), LWebletServer::GetWebletServerPort());
}

std::string LWebRoutingPublicAddress() {
  return LWebRoutingAddressText(LWebRoutingLocalHost(), LWebletServer::GetWebletServerPublicPort());
}
