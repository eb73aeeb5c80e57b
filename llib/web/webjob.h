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
//
// An exclusive job (a restore, which replaces the files every other page reads, the web
// accounts included) makes the server refuse every route but the few it names until it ends:
// those requests get "503 Service Unavailable" with a French page that says why. Only one
// exclusive job runs at a time. Its page polls through the route "jobprogress", which reads
// the session but no record of the businesses.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class LProcessInterface;
class LWebletForm;

inline constexpr std::string_view kWebJobBusyMessage =
    "Une restauration des données est en cours. Veuillez patienter quelques instants puis recharger la page.";

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

// LWebJobStart for an exclusive job: while it runs only allowedRoutes are served. "" (nothing
// started) when another exclusive job runs.
std::string LWebJobStartExclusive(const std::string& owner, LWebJobFunction run, std::vector<std::string> allowedRoutes);
// true while an exclusive job runs and route is not one it allows.
bool LWebJobRefusesRoute(std::string_view route);
// Waits until no job runs (the service's stop); false when maxMs passed first.
bool LWebJobWaitAll(unsigned maxMs);

// The owner of the jobs a page of this session starts: its user, or the desk.
std::string WLJobOwner(LWebletForm& form);
// Route "jobprogress?id=ID": for the session that owns the job, script for the page,
// "ShowJobState(progress, 'status', finished);" then, once finished, the job's answer script;
// "ShowJobState(0, '', true);" for a job that is not the session's (or no more known).
void WLJobProgress(LWebletForm& form);
