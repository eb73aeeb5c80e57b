#include "llib/web/webjob.h"

#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include <nlohmann/json.hpp>

#include "llib/gen/file.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/randomtext.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// One job: its state, guarded by the table's mutex, and the interface its work reports to.
class Job : public LProcessInterfaceVoid {
 public:
  void SetStatus(std::string_view text, int line) override;
  void SetProgress(double fraction) override;
  void SetError(std::string_view text) override;

  LWebJobState state;                     // guarded by the table's mutex
  std::vector<std::string> allowedRoutes; // of an exclusive job; empty otherwise
  long long finishedAtMs = 0;             // when it finished (steady clock)
  std::string error;                      // the last error text set, kept for a failure without message
};

// Mutex rules: mutex guards jobs, every Job's state, and exclusive.
struct Table {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<Job>, std::less<>> jobs;
  std::shared_ptr<Job> exclusive;  // the exclusive job while it runs
  int nRunning = 0;
};

Table& TheTable() {
  static Table table;
  return table;
}

void Job::SetStatus(std::string_view text, int line) {
  if (line != 0) return;
  std::lock_guard<std::mutex> lock(TheTable().mutex);
  state.status.assign(text);
}

void Job::SetProgress(double fraction) {
  std::lock_guard<std::mutex> lock(TheTable().mutex);
  state.progress = fraction < 0 ? 0 : fraction > 1 ? 1 : fraction;
}

void Job::SetError(std::string_view text) {
  std::lock_guard<std::mutex> lock(TheTable().mutex);
  error.assign(text);
}

// Drops the jobs finished longer ago than kWebJobKeepMs. Under the mutex.
void ForgetOldJobs(Table& table) {
  long long now = NowMs();
  for (auto it = table.jobs.begin(); it != table.jobs.end();) {
    if (it->second->state.finished && now - it->second->finishedAtMs > kWebJobKeepMs) it = table.jobs.erase(it);
    else ++it;
  }
}

}  // namespace

std::string LWebJobStart(LWebJobFunction function, std::vector<std::string> exclusiveRoutes) {
  Table& table = TheTable();
  auto job = std::make_shared<Job>();
  job->allowedRoutes = std::move(exclusiveRoutes);
  std::string id = LRandomHexText(16);
  {
    std::lock_guard<std::mutex> lock(table.mutex);
    if (!job->allowedRoutes.empty()) {
      if (table.exclusive) return {};
      table.exclusive = job;
    }
    ForgetOldJobs(table);
    table.jobs[id] = job;
    ++table.nRunning;
  }
  std::thread([job, work = std::move(function)] {
    std::string message;
    LProcessResult result = work(*job, message);
    Table& table = TheTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    job->state.result = result;
    job->state.message = message.empty() && result != kProcessFinished ? job->error : message;
    job->state.finished = true;
    if (result == kProcessFinished) job->state.progress = 1;
    job->finishedAtMs = NowMs();
    if (table.exclusive == job) table.exclusive.reset();
    --table.nRunning;
  }).detach();
  return id;
}

bool LWebJobGet(std::string_view id, LWebJobState& state) {
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto it = table.jobs.find(id);
  if (it == table.jobs.end()) return false;
  state = it->second->state;
  return true;
}

bool LWebJobRefusesRoute(std::string_view route) {
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  if (!table.exclusive) return false;
  for (const std::string& allowed : table.exclusive->allowedRoutes)
    if (allowed == route) return false;
  return true;
}

bool LWebJobWaitAll(unsigned maxMs) {
  for (unsigned waited = 0;; waited += 10) {
    {
      std::lock_guard<std::mutex> lock(TheTable().mutex);
      if (TheTable().nRunning == 0) return true;
    }
    if (waited >= maxMs) return false;
    LSleepMs(10);
  }
}

void WLJobProgress(LWebletForm& form) {
  LWebJobState state;
  nlohmann::json answer;
  if (!LWebJobGet(form.GetParam("id"), state)) {
    answer = {{"unknown", true}};
  } else {
    answer = {{"progress", state.progress},
              {"status", state.status},
              {"finished", state.finished},
              {"ok", state.finished && state.result == kProcessFinished},
              {"message", state.message}};
  }
  form.WriteHeader("HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nCache-Control: no-store\r\n"
                   "Connection: close\r\n\r\n");
  form.Write(LJsonDump(answer));
}
