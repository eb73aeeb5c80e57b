// LProcessAsExeInterface: the interface of a long operation that runs in a worker process. The
// worker reports to its parent over a byte stream (its output) and learns that it should stop
// when its input becomes readable: the parent writes one byte there when the user cancels, and
// the input also reads as "ready" at end of file, so a worker whose parent is gone stops too.
//
// The messages on the output stream (read back by LProcessMessageReader in the parent):
//
//     result: finished    0x01, then the result data (no length: it runs to the end of the stream)
//     result: cancelled   0x02
//     result: failed      0x00, then the result data
//     progress            0x10, the fraction as an 8-byte IEEE double
//     indeterminate on    0x11
//     indeterminate off   0x12
//     keep-alive          0x13
//     error text          0x80, 2-byte length, the text (no terminator)
//     status text         0x81 + line (line 0, 1 or 2), 2-byte length, the text
//
// Multi-byte numbers are little-endian. Texts longer than 65,535 bytes are cut to 65,535 and the
// length says what was sent. Progress goes out at most every 250 ms, except that a fraction of
// 1.0 or more always goes out. IsToStop sends a keep-alive at most every 1,000 ms, so a parent
// can tell a busy worker from a hung one, and it never consumes the stop request: every later
// test sees it too. A result is the last message: nothing is sent after it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "llib/gen/process.h"

// The first byte of each message.
enum LProcessMessageCode : unsigned char {
  kProcessMessageFailed = 0x00,
  kProcessMessageFinished = 0x01,
  kProcessMessageCancelled = 0x02,
  kProcessMessageProgress = 0x10,
  kProcessMessageIndeterminateOn = 0x11,
  kProcessMessageIndeterminateOff = 0x12,
  kProcessMessageKeepAlive = 0x13,
  kProcessMessageError = 0x80,
  kProcessMessageStatus = 0x81,  // + line 0, 1 or 2
};

inline constexpr std::size_t kProcessMaxTextBytes = 65535;        // longest text of one message
inline constexpr unsigned kProcessProgressIntervalMs = 250;       // least time between progresses
inline constexpr unsigned kProcessKeepAliveIntervalMs = 1000;     // least time between keep-alives
inline constexpr unsigned kProcessWaitSliceMs = 300;              // longest sleep between stop tests

class LProcessAsExeInterface : public LProcessInterface {
 public:
  // Writes the messages to outputFd and watches inputFd for the stop request. Neither descriptor
  // is closed by the interface. A write that fails (the parent has gone) makes IsToStop true;
  // the worker must ignore SIGPIPE for that to be seen rather than to kill it.
  LProcessAsExeInterface(int outputFd, int inputFd);

  // Sends a keep-alive (at most every 1,000 ms), then true when the input has data to read or
  // has reached its end, or when the output is broken.
  bool IsToStop() override;
  // true at once when stopped; otherwise sleeps in slices of at most 300 ms, each ended early by
  // a stop request, and tests IsToStop between them. true when stopped, false when ms are over.
  bool ProcessWait(unsigned int ms) override;
  void SetError(std::string_view text) override;
  // A line above 2 (or below 0) sends nothing.
  void SetStatus(std::string_view text, int line) override;
  void SetProgress(double fraction) override;
  void SetProgressIndeterminateOn() override;
  void SetProgressIndeterminateOff() override;
  // Finished and failed send their data after the code; cancelled sends none.
  void SetResultCode(LProcessResult result, const void* data, unsigned long size) override;

 private:
  using Clock = std::chrono::steady_clock;
  void Send(const void* bytes, std::size_t size);
  void SendText(unsigned char code, std::string_view text);

  int outputFd_;                     // where messages go
  int inputFd_;                      // readable means: stop
  bool outputBroken_ = false;        // a write failed: nobody is listening any more
  bool resultSent_ = false;          // the result went out; the stream is complete
  bool progressSent_ = false;        // lastProgress_ is meaningful
  bool keepAliveSent_ = false;       // lastKeepAlive_ is meaningful
  Clock::time_point lastProgress_;   // when the last progress message went out
  Clock::time_point lastKeepAlive_;  // when the last keep-alive went out
};

// Makes this process a worker on its standard streams: the message stream moves to a private
// descriptor (returned) and standard output is pointed at standard error, so that a stray print
// cannot break the stream; SIGPIPE is ignored. The stop request is read from standard input
// (descriptor 0). Returns -1 when the descriptors could not be arranged.
int LProcessAsExeTakeStandardStreams();
