#include "llib/web/webjob.h"

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "llib/gen/process.h"
#include "llib/gen/randomtext.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webpage.h"

namespace {

constexpr auto kForgetAfter = std::chrono::minutes(10);

struct Job {
  std::string owner;
  LWebJobState state;  // guarded by the registry's mutex
  std::chrono::steady_clock::time_point finishedAt;
};

// Mutex rules: the registry's mutex guards the map and every job's state; the job's thread
// takes it only to publish progress, never while it works on the books.
struct Registry {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<Job>> jobs;
  std::shared_ptr<Job> exclusive;            // the exclusive job while it runs
  std::vector<std::string> exclusiveRoutes;  // the routes it leaves served
  int nRunning = 0;                          // jobs whose thread has not ended
};

Registry& Jobs() {
  static Registry registry;
  return registry;
}

// The process interface of a job: what the operation reports goes into the job's state.
class JobProcess : public LProcessInterfaceVoid {
 public:
  explicit JobProcess(std::shared_ptr<Job> job) : job_(std::move(job)) {}
  void SetStatus(std::string_view text, int line) override {
    if (line != 0) return;
    std::lock_guard<std::mutex> guard(Jobs().mutex);
    job_->state.status.assign(text);
  }
  void SetProgress(double fraction) override {
    std::lock_guard<std::mutex> guard(Jobs().mutex);
    job_->state.progress = fraction < 0 ? 0 : (fraction > 1 ? 1 : fraction);
  }
  void SetProgressIndeterminateOn() override {
    std::lock_guard<std::mutex> guard(Jobs().mutex);
    job_->state.progress = -1;
  }

 private:
  std::shared_ptr<Job> job_;
};

void ForgetOldJobs(Registry& registry) {
  auto now = std::chrono::steady_clock::now();
  for (auto it = registry.jobs.begin(); it != registry.jobs.end();) {
    if (it->second->state.finished && now - it->second->finishedAt > kForgetAfter) it = registry.jobs.erase(it);
    else ++it;
  }
}

}  // namespace

namespace {

// Registers job and runs run on a thread of its own. exclusive: job holds the server
// (the caller has checked that no other does).
std::string Start(std::shared_ptr<Job> job, LWebJobFunction run, bool exclusive, std::vector<std::string> routes) {
  std::string id = LRandomHexText(12);
  {
    Registry& registry = Jobs();
    std::lock_guard<std::mutex> guard(registry.mutex);
    if (exclusive) {
      if (registry.exclusive) return {};
      registry.exclusive = job;
      registry.exclusiveRoutes = std::move(routes);
    }
    ForgetOldJobs(registry);
    registry.jobs[id] = job;
    ++registry.nRunning;
  }
  std::thread([job, run = std::move(run)]() {
    JobProcess process(job);
    LWebJobAnswer answer;
    run(process, answer);
    Registry& registry = Jobs();
    std::lock_guard<std::mutex> guard(registry.mutex);
    job->state.answer = std::move(answer);
    job->state.progress = 1;
    job->state.finished = true;
    job->finishedAt = std::chrono::steady_clock::now();
    if (registry.exclusive == job) registry.exclusive.reset();
    --registry.nRunning;
  }).detach();
  return id;
}

}  // namespace

std::string LWebJobStart(const std::string& owner, LWebJobFunction run) {
  auto job = std::make_shared<Job>();
  job->owner = owner;
  return Start(std::move(job), std::move(run), false, {});
}

std::string LWebJobStartExclusive(const std::string& owner, LWebJobFunction run, std::vector<std::string> allowedRoutes) {
  auto job = std::make_shared<Job>();
  job->owner = owner;
  return Start(std::move(job), std::move(run), true, std::move(allowedRoutes));
}

bool LWebJobRefusesRoute(std::string_view route) {
  Registry& registry = Jobs();
  std::lock_guard<std::mutex> guard(registry.mutex);
  if (!registry.exclusive) return false;
  for (const std::string& allowed : registry.exclusiveRoutes)
    if (allowed == route) return false;
  return true;
}

bool LWebJobWaitAll(unsigned maxMs) {
  for (unsigned waited = 0;; waited += 10) {
    {
      std::lock_guard<std::mutex> guard(Jobs().mutex);
      if (Jobs().nRunning == 0) return true;
    }
    if (waited >= maxMs) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

std::string WLJobOwner(LWebletForm& form) {
  return std::string(form.session.GetString("user", "")) + "|" + form.session.GetString("desk", "");
}

void WLJobProgress(LWebletForm& form) {
  WLWriteScriptAnswerHeader(form);
  LWebJobState state;
  if (!LWebJobPoll(form.GetParam("id"), WLJobOwner(form), state)) {
    form.Write("ShowJobState(0, '', true);\n");
    return;
  }
  form.Write(LWebFormat("ShowJobState(%.3f, '%s', %s);\n", state.progress, LJScriptEscape(state.status).c_str(),
                        state.finished ? "true" : "false"));
  if (state.finished) form.Write(state.answer.script);
}

bool LWebJobPoll(const std::string& id, const std::string& owner, LWebJobState& state) {
  Registry& registry = Jobs();
  std::lock_guard<std::mutex> guard(registry.mutex);
  auto it = registry.jobs.find(id);
  if (it == registry.jobs.end() || it->second->owner != owner) return false;
  state = it->second->state;
  if (state.finished) registry.jobs.erase(it);
  return true;
}

std::string LWebJobPollScript(const std::string& route, int controlId, const std::string& id,
                              const std::string& progressId) {
  return LWebFormat("PollJob('%s', %d, '%s', '%s');\n", LJScriptEscape(route).c_str(), controlId,
                    LJScriptEscape(id).c_str(), LJScriptEscape(progressId).c_str());
}
