// The id of this process, asked of the system once and again only after a fork: the locks kept
// between holds compare it at every posting, and glibc no longer caches getpid(2).
#pragma once

#include <sys/types.h>

pid_t LProcessId();
