// Test support: a TCP server on 127.0.0.1 and a free port whose every connection is served by a
// script written in the test (a function over the connection). It plays the servers that real
// ones never are: one that says nothing, one that talks forever, one that closes in the middle,
// one that answers a TLS handshake in plain text. Connections are served one after another on
// the server's own thread.
#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

class LScriptedTcpServer;

class LScriptedTcpConnection {
 public:
  // Sends bytes (through TLS once AcceptTls succeeded); false when the client is gone or the
  // server is stopping.
  bool Send(std::string_view bytes);
  // One line without its CR LF within timeoutMs; false on time-out, end or stop. Each line read
  // is also kept in the server's journal (Received()).
  bool ReadLine(std::string& line, int timeoutMs = 5000);
  // Reads and drops everything until the client closes; false on time-out or stop.
  bool WaitForClose(int timeoutMs);
  // Server side of a TLS handshake with this certificate and key; false when it failed.
  bool AcceptTls(const std::string& certFile, const std::string& keyFile);
  bool IsStopping() const;

 private:
  friend class LScriptedTcpServer;
  LScriptedTcpConnection(LScriptedTcpServer& server, int fd) : server_(server), fd_(fd) {}
  ~LScriptedTcpConnection();
  // Waits for input within timeoutMs; false on time-out or stop.
  bool WaitReadable(int timeoutMs);
  // Reads some bytes into buffer_; false at the end.
  bool Fill(int timeoutMs);

  LScriptedTcpServer& server_;
  int fd_;
  SSL_CTX* context_ = nullptr;
  SSL* ssl_ = nullptr;
  std::string buffer_;  // bytes read and not yet returned as lines
};

class LScriptedTcpServer {
 public:
  using Script = std::function<void(LScriptedTcpConnection&)>;

  explicit LScriptedTcpServer(Script script);
  // Stops serving: a script still running sees IsStopping() and its reads and writes fail.
  ~LScriptedTcpServer();
  LScriptedTcpServer(const LScriptedTcpServer&) = delete;
  LScriptedTcpServer& operator=(const LScriptedTcpServer&) = delete;

  int Port() const { return port_; }
  std::string Address() const { return "127.0.0.1:" + std::to_string(port_); }
  // Connections accepted so far.
  int Connections() const { return connections_; }
  // Every line the scripts read, in order.
  std::vector<std::string> Received() const;

 private:
  friend class LScriptedTcpConnection;
  void Serve();
  void Record(const std::string& line);

  Script script_;
  int listenFd_ = -1;
  int stopPipe_[2] = {-1, -1};  // written once to stop the serving thread's waits
  int port_ = 0;
  std::atomic<int> connections_{0};
  std::atomic<bool> stopping_{false};
  mutable std::mutex mutex_;
  std::vector<std::string> received_;  // guarded by mutex_
  std::thread thread_;
};

// A TCP port of 127.0.0.1 on which nothing listens (taken free, then released): connecting
// there is refused at once.
int LRefusingPort();
