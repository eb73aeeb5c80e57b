// Long operations started from a web page: the request that starts one returns at once with the
// job's id, the operation runs on a thread of its own under an LProcessInterface that records its
// progress and status, and the page asks every few hundred milliseconds how far it has come
// (ajax.js, PollJob) until it has finished and its answer script is run.
//
//     std::string id = LWebJobStart(owner, [data](LProcessInterface& process, LWebJobAnswer& answer) {
//       answer.script = Process(process, *data) == kProcessFinished ? "window.location = 'acclist';" : "...";
//     });
//
// A job belongs to its owner (the session's user): no one else may poll it. A finished job is
// forgotten once its answer was read, or ten minutes after it finished.
#pragma once

#include <functional>
#include <string>

class LProcessInterface;

// What a job leaves for its page once finished: script the browser runs.
struct LWebJobAnswer {
  std::string script;
};

// Where a job stands.
struct LWebJobState {
  double progress = 0;    // 0 to 1; negative while indeterminate
  std::string status;     // status line 0
  bool finished = false;
  LWebJobAnswer answer;   // set once finished
};

using LWebJobFunction = std::function<void(LProcessInterface& process, LWebJobAnswer& answer)>;

// Starts the job on a new thread; returns its id (random letters and digits).
std::string LWebJobStart(const std::string& owner, LWebJobFunction run);
// The job's state; false when there is no such job of that owner. A finished job is then
// forgotten.
bool LWebJobPoll(const std::string& id, const std::string& owner, LWebJobState& state);
// Script that polls the job through the AJAX command controlId of route and shows its progress
// in the element progressId (PollJob of ajax.js).
std::string LWebJobPollScript(const std::string& route, int controlId, const std::string& id,
                              const std::string& progressId);
