// A change stopped at each of its steps in turn: run in a child process that is killed (SIGKILL,
// as a crash looks to the program) at its nth write, then its nth rename or truncation, for
// n = 1, 2, ... until a child finishes the change whole. The books the kill left behind are then
// looked at by this process, as the next command to open them.
#pragma once

#include <functional>
#include <string>

#include "llib/gen/syscallfault.h"

// For each step: prepare runs here (what the change works on, made anew each time), change runs in
// the child, inspect runs here after the kill with where it fell ("write 3"). Returns the number
// of steps the change was killed at.
int LKillAtEachStep(const std::function<void()>& prepare, const std::function<void()>& change,
                    const std::function<void(const std::string& where)>& inspect);

// Runs change in a child process killed at its nth call of kind. true when the kill fell; false
// when the change ran whole first (or the child could not be run: the test failed then).
bool LRunKilledAt(LSyscall kind, unsigned nth, const std::function<void()>& change);
