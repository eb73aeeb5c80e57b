#include "llib/web/webjob.h"

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "llib/gen/process.h"
#include "llib/gen/randomtext.h"
#include "llib/web/webformat.h"

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

std::string LWebJobStart(const std::string& owner, LWebJobFunction run) {
  auto job = std::make_shared<Job>();
  job->owner = owner;
  std::string id = LRandomHexText(12);
  {
    Registry& registry = Jobs();
    std::lock_guard<std::mutex> guard(registry.mutex);
    ForgetOldJobs(registry);
    registry.jobs[id] = job;
  }
  std::thread([job, run = std::move(run)]() {
    JobProcess process(job);
    LWebJobAnswer answer;
    run(process, answer);
    std::lock_guard<std::mutex> guard(Jobs().mutex);
    job->state.answer = std::move(answer);
    job->state.progress = 1;
    job->state.finished = true;
    job->finishedAt = std::chrono::steady_clock::now();
  }).detach();
  return id;
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
