// Copying and moving whole folders: the file work under backup and restore.
//
// The copy is a long operation, Process(LProcessInterface&, LCopyFolderData&): it first counts
// the files (progress indeterminate meanwhile), then copies folder by folder, reporting the
// fraction of files copied and, as status line 0, the folder being copied. Files keep their
// permission bits and modification time, symbolic links are copied as links, and other kinds of
// entries (pipes, sockets, devices) are not business data and are skipped. At the end the file
// system of the destination is flushed to disk, so a finished copy survives a power cut.
//
// A move is a rename when both folders are on one file system; across file systems the rename
// is refused (EXDEV) and the folder is copied, then the original removed.
#pragma once

#include <string>

#include "llib/gen/process.h"

struct LCopyFolderData {
  std::string source;       // the folder whose content is copied
  std::string destination;  // an existing folder that receives it
  long long nFiles = 0;     // files and links copied so far
  long long nBytes = 0;     // bytes of file content copied so far
  std::string error;        // the text of a failure, as given to SetError
};

// Copies the content of data.source into data.destination. Finished when everything was copied
// and flushed; cancelled when the interface asked to stop (checked before each file); failed at
// the first entry that cannot be read or written, with an error text naming it. After a cancel or
// a failure the destination holds what was copied so far: the caller removes it.
LProcessResult Process(LProcessInterface& process, LCopyFolderData& data);

// Moves the folder from to the path to, which must not exist. true when to holds the folder
// and from is gone. false (error set when not null) when it could not be moved: then either
// from is untouched and to does not exist, or (a copy across file systems whose original could
// not be removed completely) to is a complete copy and from is what the removal left.
bool LMoveFolder(const std::string& from, const std::string& to, std::string* error = nullptr);
