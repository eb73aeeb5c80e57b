// Opening the records that many calls read and few change (the option records of a business: its
// currency, its taxes, the settings of each kind of document) from a copy kept per process: an
// open whose file is unchanged since the copy was read (llib/gen/filestamp.h) costs one stat
// instead of an open, a lock, a read and a close. Another process's save shows at once: it is a
// new file, or a write in place that changes the file's change time.
//
// The record comes out exactly as LFileStoreListBase::OpenAlways gives it: attached, ready to be
// changed and saved, and saving goes through the store as ever. Safe from several threads.
#pragma once

#include <string_view>

class LFileStoreListBase;
class LRecord;

// As list.OpenAlways(r, key): true when the record exists (its fields loaded), false when it does
// not (r attached under key, empty, created by its first save).
bool LFileStoreOpenAlwaysCached(const LFileStoreListBase& list, LRecord& r, std::string_view key);
