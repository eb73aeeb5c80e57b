// Telling whether a file or a folder changed since it was last read, for what a process keeps in
// memory between two reads of it. Another process may change the file at any time; what it
// does always shows in what stat says of the path:
//   - a record saved by rename is a new inode;
//   - a write in place changes the change time (and usually the size);
//   - a file created, renamed in or removed changes its folder's change time.
// The change time ("ctime") is used rather than the modification time because no program can
// set it back (a restored backup keeps its files' old modification times).
//
// The trap: file times come from a clock that moves by ticks of a few milliseconds, so two
// changes within one tick may leave the same time. A stamp therefore only vouches for what was
// read after it when it was taken a tick or more after the last change ("settled"): any later
// change then carries a later time. A cache filled under an unsettled stamp is read again next
// time, as a file written this very moment would be (the rule git uses for its index).
//
//     LFileStamp before = LFileStampOf(path);   // taken before reading
//     ... read path ...
//     if (LFileStampStillHolds(before, LFileStampOf(path))) ... what was read is still current
#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>

struct LFileStamp {
  bool exists = false;   // stat succeeded
  bool settled = false;  // the last change is at least one clock tick older than the stamp
  dev_t device = 0;      // file system of the inode
  ino_t inode = 0;       // the inode the path named
  off_t size = 0;        // bytes
  timespec ctime{};      // last change of the inode (content, name or entries of a folder)
};

// The stamp of path now; exists false when stat fails.
LFileStamp LFileStampOf(const std::string& path);

// Whether what was read after taking cached is still what path holds, given its stamp now:
// cached was settled, and path still names the same inode, of the same size, unchanged since.
bool LFileStampStillHolds(const LFileStamp& cached, const LFileStamp& now);
