// Starting the desk: `kontavo desk` makes sure the service of the application folder runs with
// its web server listening, then hands the browser a one-time logon link (llib/web/webdesk.h).
//
// The service is started only when its control socket "kontavod" does not answer; it is the
// program itself run as `serve`, in a session of its own, its log appended to "kontavod.log" of
// the application folder. A web server switched off is switched on: the browser is the desk's
// window. When another program holds the web port, the desk cannot open; the page written for
// that case says which port and how to choose another.
#pragma once

#include <string>

inline constexpr unsigned kDeskServiceWaitMs = 10000;  // the service's socket, then its listener
inline constexpr std::string_view kDeskServiceLogName = "kontavod.log";
inline constexpr std::string_view kDeskProblemPageName = "desk-probleme.html";

enum class LDeskStart {
  kReady,          // the web server listens
  kPortTaken,      // another program holds the port
  kServiceFailed,  // the service could not be started or did not answer in time
};

// Makes sure the service runs and its web server listens, starting program (this executable)
// as `serve` when needed; waits at most kDeskServiceWaitMs for each step. port is set to the web
// port in every case.
LDeskStart LWebDeskStartService(const std::string& program, int& port);
// "http://127.0.0.1:PORT/desk?token=..." with a fresh token; false when the token file cannot be
// written (url left empty).
[[nodiscard]] bool LWebDeskMakeLink(int port, std::string& url);
// The French text that explains why the desk did not open, for the terminal.
std::string LWebDeskProblemText(LDeskStart problem, int port);
// Writes the same explanation as a page "desk-probleme.html" of the application folder, for the
// browser; its path in path. false when it cannot be written.
[[nodiscard]] bool LWebDeskWriteProblemPage(LDeskStart problem, int port, std::string& path);
