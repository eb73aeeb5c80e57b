// The terminal display of long operations: Ctrl-C becomes a cancel while it lives, and it
// writes nothing where its output is no terminal.
#include "llib/gen/processterminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <unistd.h>

#include <string>

namespace {

void CountInterrupt(int) {}

std::string ReadAvailable(int fd) {
  ::fcntl(fd, F_SETFL, O_NONBLOCK);
  std::string bytes;
  char buffer[4096];
  ssize_t n;
  while ((n = ::read(fd, buffer, sizeof buffer)) > 0) bytes.append(buffer, static_cast<std::size_t>(n));
  return bytes;
}

// A long operation over its data: counts up to a limit, failing at a given number.
struct CountUp {
  int limit = 0;
  int failAt = -1;
  int reached = 0;
};

LProcessResult Process(LProcessInterface& process, CountUp& data) {
  for (data.reached = 0; data.reached < data.limit; ++data.reached) {
    if (process.IsToStop()) return kProcessCancelled;
    if (data.reached == data.failAt) {
      process.SetErrorF("échec à %d", data.reached);
      return kProcessFailed;
    }
    process.SetProgress(static_cast<double>(data.reached) / data.limit);
  }
  return kProcessFinished;
}

}  // namespace

TEST(ProcessTerminal, RunsAProcessAndHandsItsErrorBack) {
  CountUp whole{10};
  std::string error = "unchanged";
  EXPECT_EQ(LProcessRunOnTerminal("Calcul", whole, &error), kProcessFinished);
  EXPECT_EQ(whole.reached, 10);
  EXPECT_EQ(error, "");
  CountUp failing{10, 4};
  EXPECT_EQ(LProcessRunOnTerminal("Calcul", failing, &error), kProcessFailed);
  EXPECT_EQ(error, "échec à 4");
}

TEST(ProcessTerminal, CtrlCCancelsWhileTheDisplayLivesThenTheOldHandlingIsBack) {
  struct sigaction mine {}, previous {}, now {};
  mine.sa_handler = CountInterrupt;
  sigemptyset(&mine.sa_mask);
  ::sigaction(SIGINT, &mine, &previous);
  {
    int pipeFds[2];
    ASSERT_EQ(::pipe(pipeFds), 0);
    LProcessTerminal display("Fichiers de sauvegarde", pipeFds[1]);
    EXPECT_FALSE(display.IsToStop());
    EXPECT_FALSE(display.ProcessWait(20));
    ::raise(SIGINT);
    EXPECT_TRUE(display.IsToStop());
    EXPECT_TRUE(display.ProcessWait(10000));  // at once
    display.SetStatus("Customers", 0);
    display.SetProgress(1.0);
    display.SetResultCode(kProcessCancelled, nullptr, 0);
    EXPECT_FALSE(display.IsDrawing());
    EXPECT_EQ(ReadAvailable(pipeFds[0]), "");  // a pipe is no terminal: nothing drawn
    ::close(pipeFds[0]);
    ::close(pipeFds[1]);
  }
  ::sigaction(SIGINT, nullptr, &now);
  EXPECT_EQ(now.sa_handler, &CountInterrupt);
  ::sigaction(SIGINT, &previous, nullptr);
}

TEST(ProcessTerminal, DrawsTitleBarPercentAndStatusOnATerminal) {
  int master = -1, slave = -1;
  ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
  {
    LProcessTerminal display("Restaurer les fichiers", slave);
    EXPECT_TRUE(display.IsDrawing());
    display.SetStatus("Ledger", 0);
    display.SetProgress(0.5);
    display.SetProgress(1.0);
    display.SetResultCode(kProcessFinished, nullptr, 0);
  }
  std::string screen = ReadAvailable(master);
  EXPECT_EQ(screen.find("Restaurer les fichiers\r\n"), 0u) << screen;
  EXPECT_NE(screen.find("[##############################] 100 %  Ledger"), std::string::npos) << screen;
  EXPECT_EQ(screen.substr(screen.size() - 2), "\r\n");
  ::close(master);
  ::close(slave);
}
