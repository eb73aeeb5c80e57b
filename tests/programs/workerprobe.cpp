// A worker process for the tests of the parent side: it behaves as its first argument says and
// reports over the byte protocol of long operations.
//
//     report    indeterminate on/off, a status, progress to 1.0, then "finished" with data "OK"
//     waitstop  waits until asked to stop, then "cancelled"
//     fail      an error text, then "failed"
//     crash     a status, then ends without a result
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "llib/gen/processasexe.h"

int main(int argc, char** argv) {
  int output = LProcessAsExeTakeStandardStreams();
  if (argc < 2 || output < 0) return 2;
  std::string_view mode = argv[1];
  LProcessAsExeInterface process(output, STDIN_FILENO);
  if (mode == "report") {
    process.SetProgressIndeterminateOn();
    process.SetStatus("Comptage", 0);
    process.SetProgressIndeterminateOff();
    for (int i = 1; i <= 4; ++i) process.SetProgress(i / 4.0);
    process.SetResultCode(kProcessFinished, "OK", 2);
  } else if (mode == "waitstop") {
    process.SetStatus("En attente", 0);
    while (!process.ProcessWait(100)) {
    }
    process.SetResultCode(kProcessCancelled, nullptr, 0);
  } else if (mode == "fail") {
    process.SetError("Impossible de copier \"x\" : accès refusé");
    process.SetResultCode(kProcessFailed, nullptr, 0);
  } else if (mode == "crash") {
    process.SetStatus("Presque", 0);
    std::_Exit(3);
  }
  return 0;
}
