// The parent side of a worker process: a long operation started as a separate program that
// reports over the byte protocol of LProcessAsExeInterface (llib/gen/processasexe.h).
//
// The parent gives the worker a pipe as standard input (the stop request: one byte written when
// the user cancels) and a pipe as standard output (the messages). Every message is replayed on
// an LProcessInterface of the parent, so the worker's progress, status and error texts show on
// the parent's own display: a progress bar on a terminal, or nothing. The worker runs in its own
// process group: a Ctrl-C at the terminal reaches only the parent, which turns it into the stop
// request, and the worker ends at its next safe point with "cancelled".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"

// Reads a worker's message stream, in pieces of any size, and replays every message on target:
// progress, indeterminate on/off, status and error texts as they come, the result once the
// stream has ended (Finish). Keep-alives are counted, not replayed.
class LProcessMessageReader {
 public:
  explicit LProcessMessageReader(LProcessInterface& target) : target_(target) {}

  // Takes the next bytes of the stream.
  void Feed(const void* data, std::size_t size);
  // The stream has ended. true when it carried a result, which is then given to the target's
  // SetResultCode; false when it ended without one, inside a message, or held a byte that is
  // no message (nothing is given to the target then).
  bool Finish();

  bool HasResult() const { return hasResult_; }
  LProcessResult GetResult() const { return result_; }
  // The bytes that followed a "finished" or "failed" result.
  const std::string& GetResultData() const { return resultData_; }
  long long GetKeepAliveCount() const { return nKeepAlives_; }

 private:
  // Replays the complete messages at the front of pending_; keeps an incomplete one.
  void Parse();
  // Replays the message at the front of bytes (not empty); the bytes it used, 0 when it is not
  // complete yet or not a message (corrupt_ set). A result uses every byte that follows.
  std::size_t ReplayOne(std::string_view bytes);

  LProcessInterface& target_;
  std::string pending_;            // bytes not yet replayed (an incomplete message)
  bool hasResult_ = false;         // a result code arrived: the rest of the stream is its data
  bool corrupt_ = false;           // an unknown message code arrived; the rest is ignored
  LProcessResult result_ = kProcessFailed;
  std::string resultData_;         // data after the result code
  long long nKeepAlives_ = 0;      // keep-alives received
};

// Starts program with args (program itself is not repeated in args) as a worker and runs it to
// its end under process: messages are replayed on process, and once process.IsToStop() is true
// the stop request is written to the worker. The environment is passed on unchanged.
//
// Returns the worker's result: kProcessFinished, kProcessCancelled, or kProcessFailed with the
// worker's error text already given to process.SetError. A worker that cannot be started, or
// that ends without a result (it crashed), gives kProcessFailed with a text of its own set on
// process. resultData (may be null) receives the data of a "finished" or "failed" result.
//
// The parent waits for the worker as long as it takes: a worker asked to stop is expected to
// end at its next safe point.
LProcessResult LProcessRunWorker(LProcessInterface& process, const std::string& program,
                                 const std::vector<std::string>& args, std::string* resultData = nullptr);

// The path of the running program (so that it can start itself as a worker); empty when the
// system does not say.
std::string LCurrentExecutablePath();
