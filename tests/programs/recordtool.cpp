// A small second process for the record store's tests:
//   recordtool create FOLDER LIST COUNT            creates COUNT new records (fields N=i, P=pid)
//   recordtool createindexed FOLDER LIST COUNT     the same in a list that keeps an index of "Date"
//                                                  (Date=i)
//   recordtool edit FOLDER LIST KEY FIELD VALUE MS  opens KEY, sets FIELD, waits MS, saves
//   recordtool hold PATH MS                         holds an exclusive flock on PATH for MS
//   recordtool append FOLDER LIST KEY FIELD VALUE MS  holds KEY of LIST (indexed on "Date") under
//                                                  its lock (LFileStoreInPlaceUpdate), waits MS,
//                                                  appends ",VALUE" to FIELD as read, saves
// It prints "ready" on stdout once it has the record open or the lock held.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreindex.h"
#include "llib/gen/filestoreinplace.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::string verb = argv[1];
  if ((verb == "create" || verb == "createindexed") && argc == 5) {
    if (verb == "createindexed") LFileStoreIndexDeclare(argv[2], argv[3], "Date");
    LFileStoreListBase list(LFileStoreDataStore(argv[2]), argv[3]);
    int count = std::atoi(argv[4]);
    for (int i = 0; i < count; ++i) {
      LRecord record;
      list.CreateNewRecord(record);
      record.SetInt("N", i);
      if (verb == "createindexed") record.SetInt("Date", i);
      record.SetInt("P", static_cast<int>(::getpid()));
      if (!record.Flush()) return 1;
    }
    return 0;
  }
  if (verb == "edit" && argc == 8) {
    LFileStoreListBase list(LFileStoreDataStore(argv[2]), argv[3]);
    LRecord record;
    list.OpenAlways(record, argv[4]);
    std::printf("ready\n");
    std::fflush(stdout);
    record.SetString(argv[5], argv[6]);
    LSleepMs(static_cast<unsigned>(std::atoi(argv[7])));
    return record.Flush() ? 0 : 1;
  }
  if (verb == "append" && argc == 8) {
    LFileStoreIndexDeclare(argv[2], argv[3], "Date");
    LFileStoreListBase list(LFileStoreDataStore(argv[2]), argv[3]);
    LRecord record;
    LFileStoreInPlaceUpdate update;
    if (!update.Open(list, argv[4], record)) return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    LSleepMs(static_cast<unsigned>(std::atoi(argv[7])));
    record.SetString(argv[5], record.GetString(argv[5]) + "," + argv[6]);
    return update.Save(record) ? 0 : 1;
  }
  if (verb == "hold" && argc == 4) {
    int fd = LRobustOpen(argv[2], O_RDWR | O_CREAT, 0666);
    if (fd < 0 || ::flock(fd, LOCK_EX) != 0) return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    LSleepMs(static_cast<unsigned>(std::atoi(argv[3])));
    ::close(fd);
    return 0;
  }
  return 2;
}
