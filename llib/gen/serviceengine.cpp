#include "llib/gen/serviceengine.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

#include "llib/gen/file.h"

extern char** environ;

// ---- The control socket ------------------------------------------------------------------------
//
// A Unix socket address holds at most 107 bytes of path; an application folder deeper than that
// is reached through the folder's descriptor as "/proc/self/fd/N/kontavod", which the kernel
// resolves like the real path.

namespace {

constexpr std::string_view kSocketName = "kontavod";

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Fills address for the socket of the application folder; folderFd receives a descriptor that
// must stay open while the address is used (-1 when none was needed).
bool MakeAddress(sockaddr_un& address, int& folderFd) {
  folderFd = -1;
  std::memset(&address, 0, sizeof address);
  address.sun_family = AF_UNIX;
  std::string path = LServiceEngine::GetControlSocketPath();
  if (path.size() >= sizeof address.sun_path) {
    folderFd = LRobustOpen(LFile::GetUserDataFolderApp(), O_PATH | O_DIRECTORY);
    if (folderFd < 0) return false;
    path = "/proc/self/fd/" + std::to_string(folderFd) + "/" + std::string(kSocketName);
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return true;
}

// A connected client socket, or -1 (errno set) when no engine listens.
int ConnectControl() {
  sockaddr_un address;
  int folderFd;
  if (!MakeAddress(address, folderFd)) return -1;
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int result = fd < 0 ? -1 : ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  int saved = errno;
  if (folderFd >= 0) ::close(folderFd);
  if (result != 0 && fd >= 0) {
    ::close(fd);
    fd = -1;
  }
  errno = saved;
  return fd;
}

// Reads exactly size bytes within the deadline.
bool ReadWithin(int fd, void* buffer, std::size_t size, long long deadlineMs) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  while (size > 0) {
    long long left = deadlineMs - NowMs();
    if (left <= 0) return false;
    pollfd pfd{fd, POLLIN, 0};
    int ready = ::poll(&pfd, 1, static_cast<int>(left));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    ssize_t n = ::read(fd, bytes, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

struct ControlHeader {
  int32_t code;
  uint32_t size;
};

constexpr uint32_t kMaxControlData = 65536;

}  // namespace

std::string LServiceEngine::GetControlSocketPath() {
  return LFile::GetUserDataFolderApp() + "/" + std::string(kSocketName);
}

bool LServiceEngine::Control(int code, const void*, std::size_t) {
  if (code != kServiceControlStop) return false;
  RequestStop();
  return true;
}

void LServiceEngine::RequestStop() {
  if (stopPipe_[1] >= 0) {
    char byte = 1;
    (void)::write(stopPipe_[1], &byte, 1);
  }
}

bool LServiceEngine::RunForeground(std::string& error) {
  int running = ConnectControl();
  if (running >= 0) {
    ::close(running);
    error = "Le service Kontavo est déjà en cours d'exécution pour ce dossier.";
    return false;
  }
  sockaddr_un address;
  int folderFd;
  if (!MakeAddress(address, folderFd)) {
    error = "Impossible de créer le canal de contrôle du service.";
    return false;
  }
  ::unlink(address.sun_path);  // left behind by an engine that did not end cleanly
  int listenFd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listenFd < 0 || ::bind(listenFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listenFd, 16) != 0) {
    if (listenFd >= 0) ::close(listenFd);
    if (folderFd >= 0) ::close(folderFd);
    error = "Impossible de créer le canal de contrôle du service.";
    return false;
  }
  ::chmod(GetControlSocketPath().c_str(), 0600);

  // SIGINT and SIGTERM are blocked before any service thread starts, so that every thread
  // inherits the mask and the signals arrive only through the signalfd below.
  sigset_t signals, previous;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &signals, &previous);
  int signalFd = ::signalfd(-1, &signals, SFD_CLOEXEC);
  ::pipe2(stopPipe_, O_CLOEXEC);

  Start();
  for (;;) {
    pollfd fds[3] = {{listenFd, POLLIN, 0}, {signalFd, POLLIN, 0}, {stopPipe_[0], POLLIN, 0}};
    if (::poll(fds, 3, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    if ((fds[1].revents & POLLIN) || (fds[2].revents & POLLIN)) break;
    if (!(fds[0].revents & POLLIN)) continue;
    int client = ::accept4(listenFd, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) continue;
    long long deadline = NowMs() + kServiceControlReadMs;
    ControlHeader header{};
    std::vector<unsigned char> data;
    unsigned char handled = 0;
    if (ReadWithin(client, &header, sizeof header, deadline) && header.size <= kMaxControlData) {
      data.resize(header.size);
      if (ReadWithin(client, data.data(), data.size(), deadline))
        handled = Control(header.code, data.data(), data.size()) ? 1 : 0;
    }
    (void)::send(client, &handled, 1, MSG_NOSIGNAL);
    ::close(client);
  }
  Stop();

  ::close(listenFd);
  ::unlink(address.sun_path);
  if (folderFd >= 0) ::close(folderFd);
  if (signalFd >= 0) ::close(signalFd);
  for (int& fd : stopPipe_) {
    ::close(fd);
    fd = -1;
  }
  ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  return true;
}

bool LServiceEngineSendControl(int code, const void* data, std::size_t size) {
  int fd = ConnectControl();
  if (fd < 0) return false;
  ControlHeader header{static_cast<int32_t>(code), static_cast<uint32_t>(size)};
  std::vector<unsigned char> message(sizeof header + size);
  std::memcpy(message.data(), &header, sizeof header);
  if (size > 0) std::memcpy(message.data() + sizeof header, data, size);
  unsigned char handled = 0;
  bool ok = ::send(fd, message.data(), message.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(message.size()) &&
            ReadWithin(fd, &handled, 1, NowMs() + kServiceControlAnswerMs) && handled == 1;
  ::close(fd);
  return ok;
}

bool LServiceEngineIsRunning() {
  int fd = ConnectControl();
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

bool LServiceEngineLaunch(const std::string& program, const std::vector<std::string>& args,
                          const std::string& logPath, int& pid) {
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // Signals the starter blocks or ignores would stay so across exec; the service must hear
  // SIGINT and SIGTERM.
  sigset_t none, defaults;
  sigemptyset(&none);
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGINT);
  sigaddset(&defaults, SIGTERM);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t child = -1;
  int spawned = ::posix_spawn(&child, program.c_str(), &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    errno = spawned;
    return false;
  }
  pid = child;
  return true;
}
