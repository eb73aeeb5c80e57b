// Test support: the real SMTP server of the mail tests (tests/llib/net/smtpserver.py, Debian's
// aiosmtpd under /usr/bin/python3) as a child process on 127.0.0.1 and a free port, and the
// self-signed certificate its STARTTLS uses, made on the spot with `openssl req`.
//
// Header only, so that the benchmarks (which do not link the test support library) use the
// same server.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace ltest {

inline std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

// Runs a program to its end with stdout and stderr thrown away; its exit status (-1 when it
// could not start).
inline int RunQuietly(const std::vector<std::string>& argv) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  std::vector<char*> args;
  for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  pid_t pid = -1;
  int spawned = ::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return -1;
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Starts a test server (argv[0] is its path) with stdout on a pipe and stderr into errorLog, and
// waits up to 10 s for the "PORT n" line it prints once it listens. The port (0 when the server
// did not start or said nothing); pid is the child's (-1 when it could not be started).
inline int SpawnServer(const std::vector<std::string>& argv, const std::string& errorLog, pid_t& pid) {
  pid = -1;
  int out[2];
  if (::pipe2(out, O_CLOEXEC) != 0) return 0;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, errorLog.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  std::vector<char*> args;
  for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  int spawned = ::posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(out[1]);
  if (spawned != 0) {
    pid = -1;
    ::close(out[0]);
    return 0;
  }
  // Python and its servers start in well under 10 s.
  std::string line;
  pollfd entry{out[0], POLLIN, 0};
  while (line.find('\n') == std::string::npos && ::poll(&entry, 1, 10000) > 0) {
    char buffer[64];
    ssize_t count = ::read(out[0], buffer, sizeof buffer);
    if (count <= 0) break;
    line.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(out[0]);
  return line.rfind("PORT ", 0) == 0 ? std::atoi(line.c_str() + 5) : 0;
}

// A test server child process: started by Start (see SpawnServer), stopped with SIGTERM and
// waited for when the object goes.
class ServerProcess {
 public:
  ServerProcess() = default;
  ~ServerProcess() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      int status = 0;
      ::waitpid(pid_, &status, 0);
    }
  }
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  bool IsRunning() const { return port_ > 0; }
  int Port() const { return port_; }

 protected:
  void Start(const std::vector<std::string>& argv, const std::string& errorLog) {
    port_ = SpawnServer(argv, errorLog, pid_);
  }

 private:
  pid_t pid_ = -1;
  int port_ = 0;
};

}  // namespace ltest

// A self-signed certificate (EC P-256) naming commonName, with "localhost" and 127.0.0.1 as
// subject alternative names, valid two days. true when both files were written.
inline bool LMakeSelfSignedCertificate(const std::string& certFile, const std::string& keyFile,
                                       const std::string& commonName = "localhost") {
  return ltest::RunQuietly({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                            "-nodes", "-keyout", keyFile, "-out", certFile, "-days", "2", "-subj",
                            "/CN=" + commonName, "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1"}) == 0;
}

class LSmtpTestServer : public ltest::ServerProcess {
 public:
  struct Options {
    bool tls = false;              // offer STARTTLS (a certificate is made in the folder)
    bool requireStartTls = false;  // refuse MAIL and AUTH before STARTTLS
    std::string auth;              // "user:password": AUTH LOGIN required
    bool authClear = false;        // AUTH allowed without TLS
    std::vector<std::string> replies;   // "CMD=CODE,CODE" (see smtpserver.py)
    std::vector<std::string> refusedRecipients;
  };

  // Starts the server; its messages, journal and certificate go to folder (created).
  LSmtpTestServer(const std::string& folder, const Options& options) : folder_(folder) {
    std::filesystem::create_directories(folder_);
    std::vector<std::string> argv = {"/usr/bin/python3", std::string(KONTAVO_TEST_SOURCE_DIR) + "/llib/net/smtpserver.py",
                                     "--outdir", folder_};
    if (options.tls) {
      certFile_ = folder_ + "/cert.pem";
      if (!LMakeSelfSignedCertificate(certFile_, folder_ + "/key.pem")) return;
      argv.insert(argv.end(), {"--tls-cert", certFile_, "--tls-key", folder_ + "/key.pem"});
    }
    if (options.requireStartTls) argv.push_back("--require-starttls");
    if (!options.auth.empty()) argv.insert(argv.end(), {"--auth", options.auth});
    if (options.authClear) argv.push_back("--auth-clear");
    for (const auto& reply : options.replies) argv.insert(argv.end(), {"--reply", reply});
    for (const auto& address : options.refusedRecipients) argv.insert(argv.end(), {"--refuse-rcpt", address});
    Start(argv, folder_ + "/server.err");
  }

  std::string Address() const { return "127.0.0.1:" + std::to_string(Port()); }
  const std::string& CertFile() const { return certFile_; }
  const std::string& Folder() const { return folder_; }

  // The commands the server saw, one a line ("CONNECT", "EHLO name", "STARTTLS", ...).
  std::string Events() const { return ltest::ReadWholeFile(folder_ + "/events.log"); }
  int MessageCount() const {
    int count = 0;
    while (std::filesystem::exists(folder_ + "/msg-" + std::to_string(count + 1) + ".json")) ++count;
    return count;
  }
  // Message n (from 1): envelope, session, headers and parts as smtpserver.py wrote them.
  nlohmann::json Message(int n) const {
    std::string text = ltest::ReadWholeFile(folder_ + "/msg-" + std::to_string(n) + ".json");
    return text.empty() ? nlohmann::json() : nlohmann::json::parse(text);
  }
  // The content of message n as the server received it, dot-stuffing removed.
  std::string Content(int n) const { return ltest::ReadWholeFile(folder_ + "/msg-" + std::to_string(n) + ".eml"); }
  // The decoded bytes of leaf part k (from 0) of message n.
  std::string Part(int n, int k) const {
    return ltest::ReadWholeFile(folder_ + "/msg-" + std::to_string(n) + "-part-" + std::to_string(k) + ".bin");
  }

 private:
  std::string folder_;
  std::string certFile_;
};
