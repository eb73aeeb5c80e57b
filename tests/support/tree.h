// Test support for whole folders: a snapshot of a tree (every entry with its kind, permission
// bits, content or link target, and modification time) to compare two trees file by file, a
// sample business tree to back up, and a small file system of a given size where the machine
// allows mounting one.
#pragma once

#include <map>
#include <string>

struct LTreeEntry {
  char kind = '?';          // 'd' folder, 'f' file, 'l' link
  unsigned mode = 0;        // permission bits
  std::string content;      // a file's bytes or a link's target
  long long mtimeNs = 0;    // files only
  bool operator==(const LTreeEntry&) const = default;
};

// Every entry below root, by its path relative to root. Empty when root cannot be read.
std::map<std::string, LTreeEntry> LTreeSnapshot(const std::string& root);

// The paths where two snapshots differ, one a line with what differs ("" when they are equal):
// readable where a failed comparison of whole trees would print every entry.
std::string LTreeDifferences(const std::map<std::string, LTreeEntry>& actual,
                             const std::map<std::string, LTreeEntry>& expected);
#define EXPECT_TREES_EQ(actual, expected) EXPECT_EQ(LTreeDifferences((actual), (expected)), "")

// Writes a small business tree into folder (created): a "Misc/Options.dat", a few customers
// and ledger day files, a nested "MultiBus/1" business, a link, an empty folder and a
// read-only file.
void LTreeWriteSampleBusiness(const std::string& folder);

// A fresh tmpfs of sizeBytes mounted on a new temporary folder, unmounted and removed with the
// object. Path() is empty when the machine does not allow mounting (not the superuser, or no
// permission inside a container): the test then says so and skips.
class LSmallFileSystem {
 public:
  explicit LSmallFileSystem(long long sizeBytes, bool readOnly = false);
  ~LSmallFileSystem();
  LSmallFileSystem(const LSmallFileSystem&) = delete;
  LSmallFileSystem& operator=(const LSmallFileSystem&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string folder_;  // the mount point
  std::string path_;    // folder_ once mounted
};

// A folder on another file system than the temporary folder, for moves that cannot rename:
// "/dev/shm" when it is one, else empty.
std::string LOtherFileSystemFolder();
