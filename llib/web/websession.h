// Web sessions kept in files, so that every thread and every process of the server sees the same
// session without any shared memory. A session is a name/value table ("user": the account id,
// "profile": the data folder of the business the user works in, and whatever pages keep, such
// as drafts) stored as one HTTP string in "SessionData/<id>.sess" of the application folder.
//
// Session ids: a kind letter ("l" long-lived, from a logon with the remember box ticked, else
// "s"), eight random lower-case letters and a process-wide serial: "sqhzkwmra12".
//
// Locks: reading takes a shared lock just long enough to read the file; the first change of a
// request takes an exclusive lock on the file, truncates it, and keeps it until FlushSession
// writes the table back at the end of the request. Both locks wait at most 10 s. A reader of a
// session that another request is changing therefore waits until that request has finished.
//
// Clean-up: before every load, files untouched for 7 days are deleted, and "l" files only after
// half a year.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "llib/gen/filelock.h"
#include "llib/gen/hashtable.h"

inline constexpr unsigned kSessionLockTimeoutMs = 10000;
inline constexpr long long kSessionShortAgeSeconds = 604800;   // 7 days
inline constexpr long long kSessionLongAgeSeconds = 15768000;  // half a year

class LWebletSessionDataFileBased : public LHashTable {
 public:
  LWebletSessionDataFileBased() = default;
  // Releases a held file without writing it (the form flushes first).
  ~LWebletSessionDataFileBased() = default;
  LWebletSessionDataFileBased(const LWebletSessionDataFileBased&) = delete;
  LWebletSessionDataFileBased& operator=(const LWebletSessionDataFileBased&) = delete;

  // The folder of the session files ("SessionData" of the application folder), created if missing.
  static std::string GetSessionFolder();
  // Deletes the session files of folder that are older than their kind allows at time now.
  static void CleanUpSessionFiles(const std::string& folder, std::time_t now);
  // An id that may name a file: not empty, no '/', '\\' or "..".
  static bool IsAcceptableId(std::string_view id);

  // Runs the clean-up, then loads the session of id. true when its file was read under a shared
  // lock. false leaves the session absent: for an empty or unacceptable id, a missing file, or a
  // lock not obtained within 10 s.
  bool LoadSession(std::string_view id);
  // Starts a new, empty, present session with a fresh id; nothing is written until a change.
  void CreateNewSession(bool longLived);
  // Present exactly when a session file path is set.
  bool IsPresent() const { return !path_.empty(); }
  const std::string& GetSessionId() const { return id_; }
  const std::string& GetPath() const { return path_; }

  // Change a value; both mark the session dirty.
  void SetString(std::string_view name, std::string_view value);
  void DeleteField(std::string_view name);
  // Takes the file for writing (exclusive lock, truncated) unless already held; nothing when the
  // session is absent.
  void SetDirty();
  // Writes the table into the held file and releases it; nothing when no file is held.
  void FlushSession();
  // Ends the session: releases the file, empties the table, deletes the file, clears the path.
  void DestroySession();

 private:
  std::string id_;    // session id, at most 259 bytes
  std::string path_;  // full path of the session file; empty: no session
  LLockedFile held_;  // the file held for writing, from the first change to FlushSession
};
