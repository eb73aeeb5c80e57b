// Test support: a private application folder per test, running the real kontavo binary, and
// the paths of the shared sample files.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

// A fresh temporary folder set as KONTAVO_HOME for the life of the object (and removed after).
class LTempHome {
 public:
  LTempHome();
  ~LTempHome();
  const std::string& Path() const { return path_; }
  // Path of the primary business ("Shared").
  std::string SharedFolder() const { return path_ + "/Shared"; }

 private:
  std::string path_;
  std::string previous_;
  bool hadPrevious_ = false;
};

// A test whose every case runs in its own application folder.
class LHomeTest : public ::testing::Test {
 protected:
  LTempHome home_;
};

struct LRunResult {
  int exitCode = -1;  // the exit status; 128 + signal when killed
  std::string out;
  std::string err;
};

// Runs the kontavo binary with args (KONTAVO_HOME as set now), feeding input on stdin.
LRunResult LRunKontavo(const std::vector<std::string>& args, const std::string& input = {});
// Runs `kontavo --json args...`, expects success and returns the parsed document (a discarded
// value when the output is not JSON).
nlohmann::json LRunKontavoJson(const std::vector<std::string>& args);
// Runs any program the same way.
LRunResult LRunProgram(const std::string& program, const std::vector<std::string>& args,
                       const std::string& input = {});

// Path of a file under the shared sample data ("csv/x.csv").
std::string LSharedDataPath(const std::string& relative);
// Reads a whole file ("" when missing).
std::string LReadFile(const std::string& path);
void LWriteFile(const std::string& path, const std::string& content);
// Changes of the books a kill left midway in the business folder: the intents that hold notes
// (processes keep empty ones between changes) and the ledger lock file when it holds one.
int LCountChangesLeft(const std::string& sharedFolder);
// The intent the ledger lock file holds: its first line, "" when it holds none (the file is empty
// or begins with a line end; an ended intent leaves its text after that line end).
std::string LLedgerIntentLeft(const std::string& sharedFolder);
// The size of the business's audit trail now (0 when there is none): it grows as soon as a change
// of the books begins.
long long LAuditTrailSize(const std::string& sharedFolder);
// Waits until started() holds, at most ten seconds, looking every millisecond: the random pause of
// a kill loop then falls while its changes run, however slow the processes are to start (a
// sanitized build under load takes longer than the whole pause), instead of before any began.
void LWaitForWork(const std::function<bool()>& started);

// A program started in the background; its stdout can be read line by line.
class LChildProcess {
 public:
  LChildProcess(const std::string& program, const std::vector<std::string>& args);
  ~LChildProcess();
  LChildProcess(const LChildProcess&) = delete;
  LChildProcess& operator=(const LChildProcess&) = delete;
  bool Started() const { return pid_ > 0; }
  // The child's process id (to send it a signal), -1 when it did not start.
  int Pid() const { return pid_; }
  // Reads one line of the child's stdout (without the line end); "" at the end.
  std::string ReadLine();
  // Waits for the child; its exit status (128 + signal when killed).
  int Wait();

 private:
  int pid_ = -1;
  int outFd_ = -1;
  int status_ = -1;
};
