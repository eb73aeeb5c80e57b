// The addresses under which users reach the web server, as shown in the password mails and by
// `kontavo web status`: "%s:%d" of an address and a port, without ":80" for port 80. The local
// address uses "Port", the public one "PublicPort" (or "Port" when that is 0).
//
// The settings group "Routing" holds "LocalAddressMode" and "PublicAddressMode". The mapping of
// a public port on the internet gateway (UPnP) and the discovery of the public address are not
// done yet: "PublicEnabled" and "AutoRouting" are kept as settings that change nothing, and the
// public address is the local one with the public port.
#pragma once

#include <string>
#include <string_view>

// "%s:%d", or the address alone when port is 80.
std::string LWebRoutingAddressText(std::string_view address, int port);

// The machine's address for the local network, chosen by "LocalAddressMode": 0 (default) the
// first IPv4 address of an interface that is up and not the loopback, else the loopback
// "127.0.0.1"; 1 the host name.
std::string LWebRoutingLocalHost();

// The server's addresses as users type them.
std::string LWebRoutingLocalAddress();
std::string LWebRoutingPublicAddress();
