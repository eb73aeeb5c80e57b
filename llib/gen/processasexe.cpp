#include "llib/gen/processasexe.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "llib/gen/file.h"

namespace {

// Readable, hung up or in error all mean the same to a worker: stop. Waits up to ms (0: a test).
bool InputIsReady(int fd, int ms) {
  pollfd input{fd, POLLIN, 0};
  for (;;) {
    int ready = ::poll(&input, 1, ms);
    if (ready >= 0) return ready > 0;
    if (errno != EINTR) return true;  // a descriptor that cannot be polled cannot tell us to go on
  }
}

void AppendLittleEndian(std::string& out, std::uint64_t value, int nBytes) {
  for (int i = 0; i < nBytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

}  // namespace

LProcessAsExeInterface::LProcessAsExeInterface(int outputFd, int inputFd)
    : outputFd_(outputFd), inputFd_(inputFd) {}

void LProcessAsExeInterface::Send(const void* bytes, std::size_t size) {
  if (resultSent_ || outputBroken_) return;
  if (!LRobustWrite(outputFd_, bytes, size)) outputBroken_ = true;
}

void LProcessAsExeInterface::SendText(unsigned char code, std::string_view text) {
  text = LTruncated(text, kProcessMaxTextBytes);
  std::string message;
  message.reserve(3 + text.size());
  message.push_back(static_cast<char>(code));
  AppendLittleEndian(message, text.size(), 2);
  message.append(text);
  Send(message.data(), message.size());
}

bool LProcessAsExeInterface::IsToStop() {
  Clock::time_point now = Clock::now();
  if (!keepAliveSent_ || now - lastKeepAlive_ >= std::chrono::milliseconds(kProcessKeepAliveIntervalMs)) {
    unsigned char code = kProcessMessageKeepAlive;
    Send(&code, 1);
    keepAliveSent_ = true;
    lastKeepAlive_ = now;
  }
  return outputBroken_ || InputIsReady(inputFd_, 0);
}

bool LProcessAsExeInterface::ProcessWait(unsigned int ms) {
  using std::chrono::milliseconds;
  const bool forever = ms == UINT_MAX;
  const Clock::time_point deadline = Clock::now() + milliseconds(forever ? 0 : ms);
  for (;;) {
    if (IsToStop()) return true;
    long long leftMs = kProcessWaitSliceMs;
    if (!forever) {
      leftMs = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
      if (leftMs <= 0) return false;
    }
    // The slice ends early when the stop request arrives, so a stop is seen at once.
    InputIsReady(inputFd_, static_cast<int>(std::min<long long>(leftMs, kProcessWaitSliceMs)));
  }
}

void LProcessAsExeInterface::SetError(std::string_view text) { SendText(kProcessMessageError, text); }

void LProcessAsExeInterface::SetStatus(std::string_view text, int line) {
  if (line < 0 || line > 2) return;
  SendText(static_cast<unsigned char>(kProcessMessageStatus + line), text);
}

void LProcessAsExeInterface::SetProgress(double fraction) {
  Clock::time_point now = Clock::now();
  bool due = !progressSent_ || now - lastProgress_ >= std::chrono::milliseconds(kProcessProgressIntervalMs);
  if (!due && !(fraction >= 1.0)) return;
  std::string message(1, static_cast<char>(kProcessMessageProgress));
  std::uint64_t bits;
  static_assert(sizeof bits == sizeof fraction);
  std::memcpy(&bits, &fraction, sizeof bits);
  AppendLittleEndian(message, bits, 8);
  Send(message.data(), message.size());
  progressSent_ = true;
  lastProgress_ = now;
}

void LProcessAsExeInterface::SetProgressIndeterminateOn() {
  unsigned char code = kProcessMessageIndeterminateOn;
  Send(&code, 1);
}

void LProcessAsExeInterface::SetProgressIndeterminateOff() {
  unsigned char code = kProcessMessageIndeterminateOff;
  Send(&code, 1);
}

void LProcessAsExeInterface::SetResultCode(LProcessResult result, const void* data, unsigned long size) {
  std::string message;
  switch (result) {
    case kProcessFinished:
      message.push_back(static_cast<char>(kProcessMessageFinished));
      break;
    case kProcessCancelled:
      message.push_back(static_cast<char>(kProcessMessageCancelled));
      break;
    case kProcessFailed:
      message.push_back(static_cast<char>(kProcessMessageFailed));
      break;
  }
  if (result != kProcessCancelled && data != nullptr) message.append(static_cast<const char*>(data), size);
  Send(message.data(), message.size());
  resultSent_ = true;
}

int LProcessAsExeTakeStandardStreams() {
  ::signal(SIGPIPE, SIG_IGN);
  int output = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  if (output < 0) return -1;
  if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    ::close(output);
    return -1;
  }
  return output;
}
