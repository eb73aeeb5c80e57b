// HMRC's fraud-prevention headers, sent with every call of the VAT interface. Kontavo connects
// straight from the user's machine to HMRC, so it sends the set of a desktop application
// connecting directly ("Gov-Client-Connection-Method: DESKTOP_APP_DIRECT"), filled from the
// machine just before each call:
//   Gov-Client-Device-ID            a UUID made once and kept in the user setting
//                                   "MTDForVAT"/"DeviceID"
//   Gov-Client-Local-IPs (+ -Timestamp)  every address of the machine's interfaces except loopback
//   Gov-Client-MAC-Addresses        the hardware addresses of the network interfaces
//   Gov-Client-Timezone             "UTC+hh:mm"
//   Gov-Client-User-Agent           operating system, its version, the machine's maker and model
//   Gov-Client-User-IDs             "os=" the login name (of the environment, else of the account)
//   Gov-Vendor-Product-Name, Gov-Vendor-Version
// Not sent, because the command line has no value for them: Gov-Client-Screens and
// Gov-Client-Window-Size (no window), Gov-Client-Multi-Factor (no sign-in of its own),
// Gov-Vendor-License-IDs (no licence key). A header whose value cannot be collected on this
// machine is left out rather than sent with a placeholder.
#pragma once

#include <string>

inline constexpr const char* kKontavoProductName = "Kontavo";
inline constexpr const char* kKontavoVersion = "1.0";

// The header lines, each ended by CRLF.
std::string FKMTDFraudPreventionHeaders();
