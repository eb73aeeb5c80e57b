// Test support for the web server: a `kontavo serve` process on a free loopback port, and a
// small raw HTTP client over real sockets (nothing of the server's own code is used to talk to
// it).
#pragma once

#include <map>
#include <string>
#include <vector>

// A free TCP port on the loopback (bound once, then released).
int LFreeLoopbackPort();

// `kontavo serve --port PORT` in the background, its stdout and stderr kept in files of the
// current KONTAVO_HOME; program is the kontavo binary to run, started in workingFolder when one
// is given.
class LServeProcess {
 public:
  explicit LServeProcess(int port, const std::string& program = KONTAVO_BIN, const std::string& workingFolder = {});
  ~LServeProcess();  // SIGKILL when still running
  LServeProcess(const LServeProcess&) = delete;
  LServeProcess& operator=(const LServeProcess&) = delete;

  // Waits up to timeoutMs for the line announcing the address on stdout.
  bool WaitReady(int timeoutMs = 15000);
  // Sends the signal and waits up to timeoutMs; the exit status (128 + signal when killed by
  // it), or -1 when it did not end.
  int Stop(int signal, int timeoutMs = 20000);
  std::string Out() const;
  std::string Log() const;  // stderr
  int Port() const { return port_; }

 private:
  int pid_ = -1;
  int port_;
  std::string outPath_;
  std::string errPath_;
};

// An IPv4 address of this machine other than the loopback ("" when it has none): a client there
// counts as another machine for the server.
std::string LOtherLocalAddress();

// A connected socket to 127.0.0.1:port, or -1.
int LConnectLoopback(int port);
// The same to another IPv4 address of this machine ("192.0.2.2").
int LConnectAddress(const std::string& ipv4, int port);
bool LSendAll(int fd, const std::string& data);
// Reads until the peer closes or timeoutMs pass; closed tells which.
std::string LReadUntilClose(int fd, int timeoutMs, bool* closed = nullptr);

struct LWebResponse {
  bool complete = false;                       // status line, headers and the whole body arrived
  int status = 0;
  std::string statusLine;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;
  std::string raw;                             // everything received for this answer
};
// Reads one answer: headers, then Content-Length bytes, or everything until close when there is
// no length.
LWebResponse LReadResponse(int fd, int timeoutMs = 10000);
// Sends request on a new connection and reads the answer to the end of the connection.
LWebResponse LHttpExchange(int port, const std::string& request, int timeoutMs = 10000);
LWebResponse LHttpExchangeAt(const std::string& ipv4, int port, const std::string& request, int timeoutMs = 10000);
// A GET or form POST with an optional session cookie.
LWebResponse LHttpGet(int port, const std::string& path, const std::string& session = {});
LWebResponse LHttpPost(int port, const std::string& path, const std::string& body, const std::string& session = {});
