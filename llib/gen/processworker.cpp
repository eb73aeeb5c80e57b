#include "llib/gen/processworker.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "llib/gen/file.h"
#include "llib/gen/processasexe.h"

extern char** environ;

namespace {

constexpr std::string_view kWorkerNotStarted = "Impossible de lancer le processus de travail.";
constexpr std::string_view kWorkerNoResult = "Le processus de travail s'est arrêté sans donner de résultat.";

// How often the parent looks at its own stop test while the worker is silent.
constexpr int kPumpSliceMs = 100;

std::uint64_t ReadLittleEndian(const char* bytes, int nBytes) {
  std::uint64_t value = 0;
  for (int i = nBytes - 1; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(bytes[i]);
  return value;
}

// Writes the stop request. The worker may already have ended, so the write may meet a closed
// pipe: SIGPIPE is held back for this one write and a pending one is taken away again, leaving
// the process's own signal handling as it was.
void WriteStopRequest(int fd) {
  sigset_t pipeOnly, previous;
  sigemptyset(&pipeOnly);
  sigaddset(&pipeOnly, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipeOnly, &previous);
  char stop = 1;
  bool broken = !LRobustWrite(fd, &stop, 1) && errno == EPIPE;
  if (broken) {
    timespec noWait{0, 0};
    while (sigtimedwait(&pipeOnly, nullptr, &noWait) < 0 && errno == EINTR) {
    }
  }
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

// The two pipes of a worker and its process id; closes what is left open on destruction.
struct WorkerPipes {
  int stopRead = -1, stopWrite = -1;        // worker's standard input
  int messageRead = -1, messageWrite = -1;  // worker's standard output
  ~WorkerPipes() {
    for (int fd : {stopRead, stopWrite, messageRead, messageWrite})
      if (fd >= 0) ::close(fd);
  }
  bool Open() {
    int stop[2], messages[2];
    if (::pipe2(stop, O_CLOEXEC) != 0) return false;
    stopRead = stop[0];
    stopWrite = stop[1];
    if (::pipe2(messages, O_CLOEXEC) != 0) return false;
    messageRead = messages[0];
    messageWrite = messages[1];
    return true;
  }
};

pid_t SpawnWorker(const std::string& program, const std::vector<std::string>& args, WorkerPipes& pipes) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipes.stopRead, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, pipes.messageWrite, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // Its own process group: the terminal's Ctrl-C goes to the parent only, which forwards it.
  posix_spawnattr_setpgroup(&attributes, 0);
  // Signals the parent ignores stay ignored across exec; the worker starts with the defaults.
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGINT);
  sigaddset(&defaults, SIGTERM);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);

  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  pid_t pid = -1;
  int spawned = ::posix_spawn(&pid, program.c_str(), &actions, &attributes, argv.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return spawned == 0 ? pid : -1;
}

}  // namespace

// ---- Message reader ---------------------------------------------------------------------------

void LProcessMessageReader::Feed(const void* data, std::size_t size) {
  const char* bytes = static_cast<const char*>(data);
  if (corrupt_) return;
  if (hasResult_) {
    resultData_.append(bytes, size);
    return;
  }
  pending_.append(bytes, size);
  Parse();
}

void LProcessMessageReader::Parse() {
  std::size_t at = 0;
  while (at < pending_.size() && !hasResult_ && !corrupt_) {
    std::size_t used = ReplayOne(std::string_view(pending_).substr(at));
    if (used == 0) break;
    at += used;
  }
  pending_.erase(0, at);
}

std::size_t LProcessMessageReader::ReplayOne(std::string_view bytes) {
  const auto code = static_cast<unsigned char>(bytes[0]);
  if (code >= kProcessMessageError && code <= kProcessMessageStatus + 2) {
    if (bytes.size() < 3) return 0;
    std::size_t length = ReadLittleEndian(bytes.data() + 1, 2);
    if (bytes.size() < 3 + length) return 0;
    std::string_view text = bytes.substr(3, length);
    if (code == kProcessMessageError) target_.SetError(text);
    else target_.SetStatus(text, code - kProcessMessageStatus);
    return 3 + length;
  }
  switch (code) {
    case kProcessMessageProgress: {
      if (bytes.size() < 9) return 0;
      std::uint64_t bits = ReadLittleEndian(bytes.data() + 1, 8);
      double fraction;
      std::memcpy(&fraction, &bits, sizeof fraction);
      target_.SetProgress(fraction);
      return 9;
    }
    case kProcessMessageIndeterminateOn:
      target_.SetProgressIndeterminateOn();
      return 1;
    case kProcessMessageIndeterminateOff:
      target_.SetProgressIndeterminateOff();
      return 1;
    case kProcessMessageKeepAlive:
      ++nKeepAlives_;
      return 1;
    case kProcessMessageFinished:
    case kProcessMessageCancelled:
    case kProcessMessageFailed:
      hasResult_ = true;
      result_ = code == kProcessMessageFinished    ? kProcessFinished
                : code == kProcessMessageCancelled ? kProcessCancelled
                                                   : kProcessFailed;
      resultData_.assign(bytes.substr(1));
      return bytes.size();
    default:
      corrupt_ = true;
      return 0;
  }
}

bool LProcessMessageReader::Finish() {
  if (corrupt_ || !hasResult_) return false;
  target_.SetResultCode(result_, resultData_.data(), resultData_.size());
  return true;
}

// ---- Running a worker -------------------------------------------------------------------------

LProcessResult LProcessRunWorker(LProcessInterface& process, const std::string& program,
                                 const std::vector<std::string>& args, std::string* resultData) {
  WorkerPipes pipes;
  pid_t pid = pipes.Open() ? SpawnWorker(program, args, pipes) : -1;
  if (pid < 0) {
    process.SetError(kWorkerNotStarted);
    return kProcessFailed;
  }
  ::close(pipes.stopRead);
  pipes.stopRead = -1;
  ::close(pipes.messageWrite);
  pipes.messageWrite = -1;

  LProcessMessageReader reader(process);
  bool stopSent = false;
  for (;;) {
    if (!stopSent && process.IsToStop()) {
      WriteStopRequest(pipes.stopWrite);
      stopSent = true;
    }
    pollfd messages{pipes.messageRead, POLLIN, 0};
    int ready = ::poll(&messages, 1, kPumpSliceMs);
    if (ready < 0 && errno != EINTR) break;
    if (ready <= 0) continue;
    char buffer[65536];
    ssize_t n = ::read(pipes.messageRead, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    reader.Feed(buffer, static_cast<std::size_t>(n));
  }
  // Closing the stop pipe tells a worker that is still running (it closed its output early)
  // that nobody listens any more.
  ::close(pipes.stopWrite);
  pipes.stopWrite = -1;
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (!reader.Finish()) {
    process.SetError(kWorkerNoResult);
    return kProcessFailed;
  }
  if (resultData != nullptr) *resultData = reader.GetResultData();
  return reader.GetResult();
}

std::string LCurrentExecutablePath() {
  char path[4096];
  ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0) return {};
  return std::string(path, static_cast<std::size_t>(n));
}
