// Worker processes of the command line. A long operation that must be able to stop cleanly runs
// in a second kontavo process, started by the first as
//
//     kontavo --worker TASK ARGUMENTS...
//
// (a hidden command, never typed by users). The worker reports over the byte protocol of
// LProcessAsExeInterface; the first process shows its progress on the terminal and turns a
// Ctrl-C into the worker's stop request. Tasks:
//
//     copyfolder FROM TO    copies the content of FROM into the existing folder TO
#pragma once

#include "llib/gen/backup.h"

// Runs the worker task named by argv[0] with the rest of argv as its arguments (the words that
// followed "--worker"). Exit status: 0 the task finished, 1 it was cancelled or failed, 2 no such
// task. The task's result has then been sent to the parent.
int LCliWorkerMain(int argc, char** argv);

// The copy step of backup and restore, run in a worker process under a terminal progress
// display titled as the step.
class LFolderCopierWorker : public LFolderCopier {
 public:
  LProcessResult CopyFolder(std::string_view title, const std::string& from, const std::string& to,
                            std::string& error) override;
};
