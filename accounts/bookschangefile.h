// The change files a process keeps in the ledger's intents folder (accounts/ledgerintent.h): one
// per change running at once and extension, created on first need, held under an exclusive lock
// for the life of the process, emptied after each change and removed at exit. A change thus pays
// a write and a truncation of a file that exists, never a creation and a removal.
#pragma once

#include <string>
#include <string_view>

struct LBooksChangeFile {
  std::string key;   // the folder and extension it serves
  std::string path;
  int fd = -1;       // open and locked
  long long size = 0;
  bool busy = false;  // a change is writing it
};

// An idle file of this process for extension in folder, or a new one ("<process id>-<counter>"
// then extension); null, logged, when none can be created.
LBooksChangeFile* LBooksChangeFileTake(const std::string& folder, std::string_view extension);
// Appends line and its line end; false (logged) when it could not be written.
[[nodiscard]] bool LBooksChangeFileNote(LBooksChangeFile& file, std::string_view line);
// The change is complete: the file is emptied for the next change (removed when it cannot be).
void LBooksChangeFileGiveBack(LBooksChangeFile* file);
// The change is left to the settler: the file stays as written, unlocked, and is not used again.
void LBooksChangeFileLeave(LBooksChangeFile* file);
