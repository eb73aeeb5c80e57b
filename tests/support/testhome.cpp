#include "tests/support/testhome.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "accounts/audittrail.h"
#include "app/appinstall.h"

extern char** environ;

namespace {

// Starts program with args, its streams as actions says (destroyed here); the child's pid, or
// -1 when it could not be started.
pid_t Spawn(const std::string& program, const std::vector<std::string>& args, posix_spawn_file_actions_t& actions) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  pid_t pid = -1;
  int spawned = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return spawned == 0 ? pid : -1;
}

// Waits for a child; its exit status, 128 + signal when killed.
int WaitForExit(pid_t pid) {
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

LTempHome::LTempHome() {
  path_ = std::filesystem::temp_directory_path().string() + "/kontavo-test-XXXXXX";
  if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  if (const char* previous = std::getenv("KONTAVO_HOME")) {
    previous_ = previous;
    hadPrevious_ = true;
  }
  ::setenv("KONTAVO_HOME", path_.c_str(), 1);
  LAppInstall();  // a test's business is joined up as the program's is
}

LTempHome::~LTempHome() {
  std::error_code error;
  std::filesystem::permissions(path_, std::filesystem::perms::owner_all, error);
  std::filesystem::remove_all(path_, error);
  if (hadPrevious_) ::setenv("KONTAVO_HOME", previous_.c_str(), 1);
  else ::unsetenv("KONTAVO_HOME");
}

LRunResult LRunProgram(const std::string& program, const std::vector<std::string>& args,
                       const std::string& input) {
  int inPipe[2], outPipe[2], errPipe[2];
  if (::pipe2(inPipe, O_CLOEXEC) != 0 || ::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0)
    return {};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, inPipe[0], 0);
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
  posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
  pid_t pid = Spawn(program, args, actions);
  ::close(inPipe[0]);
  ::close(outPipe[1]);
  ::close(errPipe[1]);
  LRunResult result;
  if (pid < 0) {
    ::close(inPipe[1]);
    ::close(outPipe[0]);
    ::close(errPipe[0]);
    return result;
  }
  // Feed stdin and drain both outputs together so no pipe fills up.
  ::signal(SIGPIPE, SIG_IGN);
  std::size_t written = 0;
  if (input.empty()) {
    ::close(inPipe[1]);
    inPipe[1] = -1;
  }
  ::fcntl(inPipe[1], F_SETFL, O_NONBLOCK);
  bool outOpen = true, errOpen = true;
  while (outOpen || errOpen) {
    pollfd fds[3] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}, {inPipe[1], POLLOUT, 0}};
    if (!outOpen) fds[0].fd = -1;
    if (!errOpen) fds[1].fd = -1;
    ::poll(fds, 3, 1000);
    char buffer[65536];
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP))) {
        ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
        if (n > 0) (i == 0 ? result.out : result.err).append(buffer, static_cast<std::size_t>(n));
        else (i == 0 ? outOpen : errOpen) = false;
      }
    }
    if (inPipe[1] >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
      ssize_t n = ::write(inPipe[1], input.data() + written, input.size() - written);
      if (n > 0) written += static_cast<std::size_t>(n);
      if (n < 0 || written == input.size()) {
        ::close(inPipe[1]);
        inPipe[1] = -1;
      }
    }
  }
  if (inPipe[1] >= 0) ::close(inPipe[1]);
  ::close(outPipe[0]);
  ::close(errPipe[0]);
  result.exitCode = WaitForExit(pid);
  return result;
}

LRunResult LRunKontavo(const std::vector<std::string>& args, const std::string& input) {
  return LRunProgram(KONTAVO_BIN, args, input);
}

nlohmann::json LRunKontavoJson(const std::vector<std::string>& args) {
  std::vector<std::string> all = {"--json"};
  all.insert(all.end(), args.begin(), args.end());
  LRunResult result = LRunKontavo(all);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  return nlohmann::json::parse(result.out, nullptr, false);
}

std::string LSharedDataPath(const std::string& relative) {
  return std::string(KONTAVO_SHARED_DATA) + "/" + relative;
}

std::string LReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

int LCountChangesLeft(const std::string& sharedFolder) {
  std::error_code absent;
  int n = 0;
  for (const auto& entry : std::filesystem::directory_iterator(sharedFolder + "/Ledger/Intents", absent))
    n += entry.is_regular_file() && entry.file_size(absent) > 0;
  return n + !LLedgerIntentLeft(sharedFolder).empty();
}

std::string LLedgerIntentLeft(const std::string& sharedFolder) {
  std::string text = LReadFile(sharedFolder + "/Ledger/Ledger.lock");
  return text.substr(0, text.find('\n'));
}

long long LAuditTrailSize(const std::string& sharedFolder) {
  std::error_code absent;
  std::uintmax_t size = std::filesystem::file_size(sharedFolder + "/" + std::string(kAuditTrailFile), absent);
  return absent ? 0 : static_cast<long long>(size);
}

void LWaitForWork(const std::function<bool()>& started) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!started() && std::chrono::steady_clock::now() < limit) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void LWriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

LChildProcess::LChildProcess(const std::string& program, const std::vector<std::string>& args) {
  int outPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) return;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
  pid_ = Spawn(program, args, actions);
  ::close(outPipe[1]);
  outFd_ = outPipe[0];
}

LChildProcess::~LChildProcess() {
  if (pid_ > 0 && status_ < 0) {
    ::kill(pid_, SIGKILL);
    Wait();
  }
  if (outFd_ >= 0) ::close(outFd_);
}

std::string LChildProcess::ReadLine() {
  std::string line;
  char c;
  while (::read(outFd_, &c, 1) == 1) {
    if (c == '\n') break;
    line.push_back(c);
  }
  return line;
}

int LChildProcess::Wait() {
  if (status_ < 0 && pid_ > 0) status_ = WaitForExit(pid_);
  return status_;
}
