#include "app/worker.h"

#include <unistd.h>

#include <iostream>
#include <string_view>

#include "app/cli.h"
#include "llib/gen/copytree.h"
#include "llib/gen/processasexe.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/processworker.h"

namespace {

constexpr std::string_view kWorkerOption = "--worker";
constexpr std::string_view kCopyFolderTask = "copyfolder";

LProcessResult RunCopyFolder(LProcessInterface& process, char** args, int nArgs) {
  if (nArgs != 2) {
    process.SetError("copyfolder attend deux dossiers");
    return kProcessFailed;
  }
  LCopyFolderData data;
  data.source = args[0];
  data.destination = args[1];
  return Process(process, data);
}

}  // namespace

int LCliWorkerMain(int argc, char** argv) {
  if (argc < 1 || argv[0] != kCopyFolderTask) {
    std::cerr << "kontavo " << kWorkerOption << " : tâche inconnue\n";
    return kExitUsage;
  }
  int output = LProcessAsExeTakeStandardStreams();
  if (output < 0) return kExitFailed;
  LProcessAsExeInterface process(output, STDIN_FILENO);
  LProcessResult result = RunCopyFolder(process, argv + 1, argc - 1);
  process.SetResultCode(result, nullptr, 0);
  ::close(output);
  return result == kProcessFinished ? kExitOk : kExitFailed;
}

LProcessResult LFolderCopierWorker::CopyFolder(std::string_view title, const std::string& from,
                                               const std::string& to, std::string& error) {
  LProcessTerminal display(title);
  LProcessResult result = LProcessRunWorker(display, LCurrentExecutablePath(),
                                            {std::string(kWorkerOption), std::string(kCopyFolderTask), from, to});
  if (result == kProcessFailed) error = display.GetError();
  return result;
}
