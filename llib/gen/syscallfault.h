// Failures on demand for the system calls that change files. Every write, rename, fsync and
// truncate of the program goes through the wrappers of llib/gen/file.h, and each wrapper asks
// LSyscallFaultFires first: a test arms one call kind to fail on its Nth use (counted across
// threads from the moment it is armed) with the errno it chooses, then proves that no half-written
// record, lost posting or damaged day file remains. Unarmed, the check is one relaxed atomic load.
//
//     LSyscallFaultArm(LSyscall::kRename, 3, ENOSPC);   // the third rename from now fails
//     ...
//     LSyscallFaultDisarm();
#pragma once

enum class LSyscall { kWrite, kRename, kFsync, kTruncate };

// Makes the nth call (1 = the next one) of kind fail with err; calls before and after succeed.
// Arming again replaces the previous arming of that kind.
void LSyscallFaultArm(LSyscall kind, unsigned nth, int err);
// Makes every call of kind from the nth on fail with err (a disk that stays full).
void LSyscallFaultArmFrom(LSyscall kind, unsigned nth, int err);
// Kills the process (SIGKILL, as a crash or a power cut) at the nth call of kind, before that
// call changes anything: a test can stop a change at each of its steps in turn.
void LSyscallFaultArmKill(LSyscall kind, unsigned nth);
// Disarms every kind.
void LSyscallFaultDisarm();
// Called by the wrappers: true (errno set to the armed value) when this call is to fail.
bool LSyscallFaultFires(LSyscall kind);
