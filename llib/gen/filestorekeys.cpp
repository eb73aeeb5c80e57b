#include "llib/gen/filestorekeys.h"

#include <algorithm>

#include "llib/gen/filestore.h"
#include "llib/gen/record.h"

std::vector<std::string> LFileStoreSortedKeys(const LFileStoreListBase& list) {
  std::vector<std::string> keys;
  LRecord record;
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record)) keys.push_back(record.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  return keys;
}
