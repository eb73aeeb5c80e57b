// The keys of a file list's records, for the lists that offer their records by name (budgets,
// vehicles, cheques, transaction templates...).
#pragma once

#include <string>
#include <vector>

class LFileStoreListBase;

// Every record key of list, sorted bytewise.
std::vector<std::string> LFileStoreSortedKeys(const LFileStoreListBase& list);
