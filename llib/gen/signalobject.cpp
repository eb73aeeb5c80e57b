#include "llib/gen/signalobject.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace {

// poll(2) that resumes after EINTR with the time left.
int PollFor(pollfd* fds, nfds_t count, unsigned ms) {
  using Clock = std::chrono::steady_clock;
  auto deadline = Clock::now() + std::chrono::milliseconds(ms);
  for (;;) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left < 0) left = 0;
    int result = ::poll(fds, count, static_cast<int>(left));
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace

LSignalObject::LSignalObject() { ::pipe2(fds_, O_CLOEXEC | O_NONBLOCK); }

LSignalObject::~LSignalObject() {
  for (int fd : fds_)
    if (fd >= 0) ::close(fd);
}

void LSignalObject::Set() {
  char byte = 1;
  while (::write(fds_[1], &byte, 1) < 0 && errno == EINTR) {
  }
}

void LSignalObject::Reset() {
  char buffer[64];
  while (::read(fds_[0], buffer, sizeof buffer) > 0) {
  }
}

bool LSignalObject::IsSet() const { return Wait(0); }

bool LSignalObject::Wait(unsigned ms) const {
  pollfd fd{fds_[0], POLLIN, 0};
  return PollFor(&fd, 1, ms) > 0;
}

int LSignalObjectGroup::Wait(unsigned ms) const {
  std::vector<pollfd> fds;
  for (LSignalObjectRef signal : signals_) fds.push_back({signal->ReadFd(), POLLIN, 0});
  if (PollFor(fds.data(), fds.size(), ms) <= 0) return -1;
  for (std::size_t i = 0; i < fds.size(); ++i)
    if (fds[i].revents & POLLIN) return static_cast<int>(i);
  return -1;
}
