// Long operations started by a page (a backup, a restore, an import): each runs on a thread of
// its own while the browser polls its progress, so the page that started it answers at once.
// A job reports through the LProcessInterface it is given; its state is kept under a random id
// (128 bits) that only the page that started it knows, and the route "jobprogress?id=ID"
// answers the polls with it as JSON:
//
//     {"progress":0.42,"status":"Restaurer les fichiers","finished":false,"ok":false,"message":""}
//
// An exclusive job (a restore, which replaces the files every other page reads) makes the
// server refuse every route but the few it names until it ends: those requests get "503
// Service Unavailable" with a French page that says why. Only one exclusive job runs at a time.
// Finished jobs are kept for kWebJobKeepMs so that a late poll still reads the outcome.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"

class LWebletForm;

inline constexpr long long kWebJobKeepMs = 3600000;
inline constexpr std::string_view kWebJobBusyMessage =
    "Une restauration des données est en cours. Veuillez patienter quelques instants puis recharger la page.";

// The work of a job: reports on process; returns its result with the text to show the user
// (what was done, or why it failed) in message.
using LWebJobFunction = std::function<LProcessResult(LProcessInterface& process, std::string& message)>;

struct LWebJobState {
  double progress = 0;                    // 0 to 1
  std::string status;                     // the latest status text
  bool finished = false;
  LProcessResult result = kProcessFailed; // once finished
  std::string message;                    // once finished
};

// Starts function on a thread of its own and returns the job's id. exclusiveRoutes not empty:
// the job is exclusive and these are the only routes served while it runs; "" (nothing
// started) when another exclusive job runs.
std::string LWebJobStart(LWebJobFunction function, std::vector<std::string> exclusiveRoutes = {});
// false when the id is unknown (or forgotten).
bool LWebJobGet(std::string_view id, LWebJobState& state);
// true while an exclusive job runs and route is not one it allows.
bool LWebJobRefusesRoute(std::string_view route);
// Waits until no job runs (tests, and the server's stop); false when maxMs passed first.
bool LWebJobWaitAll(unsigned maxMs);

// Route "jobprogress?id=ID": the JSON above; {"unknown":true} for an id that names no job.
void WLJobProgress(LWebletForm& form);
