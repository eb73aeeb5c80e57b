#include "llib/gen/syscallfault.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace {

constexpr int kKinds = 4;

struct LArmed {
  std::atomic<bool> armed{false};
  std::atomic<long> remaining{0};  // calls left before the failing one
  std::atomic<bool> sticky{false};  // every call from the failing one on fails
  std::atomic<int> err{0};
  std::atomic<bool> kill{false};  // the failing call kills the process instead
};

LArmed gArmed[kKinds];
std::atomic<bool> gAnyArmed{false};

void Arm(LSyscall kind, unsigned nth, int err, bool sticky, bool kill = false) {
  LArmed& slot = gArmed[static_cast<int>(kind)];
  slot.err = err;
  slot.kill = kill;
  slot.sticky = sticky;
  slot.remaining = nth == 0 ? 0 : static_cast<long>(nth) - 1;
  slot.armed = true;
  gAnyArmed = true;
}

}  // namespace

void LSyscallFaultArm(LSyscall kind, unsigned nth, int err) { Arm(kind, nth, err, false); }

void LSyscallFaultArmFrom(LSyscall kind, unsigned nth, int err) { Arm(kind, nth, err, true); }

void LSyscallFaultArmKill(LSyscall kind, unsigned nth) { Arm(kind, nth, 0, false, true); }

void LSyscallFaultDisarm() {
  gAnyArmed = false;
  for (LArmed& slot : gArmed) slot.armed = false;
}

bool LSyscallFaultFires(LSyscall kind) {
  if (!gAnyArmed.load(std::memory_order_relaxed)) return false;
  LArmed& slot = gArmed[static_cast<int>(kind)];
  if (!slot.armed) return false;
  long left = slot.remaining.fetch_sub(1);
  if (left > 0) return false;
  if (left < 0 && !slot.sticky) return false;
  if (slot.kill) ::kill(::getpid(), SIGKILL);
  errno = slot.err;
  return true;
}
