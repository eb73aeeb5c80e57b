// Changing an account's number everywhere it is stored: column 4 of every day-file row that names
// it, the names of its reconciliation file and of its statement lines, the linked-account slots,
// the bills that name it as payable or item account, the journal entry's remembered account,
// and finally the key of the account record itself. Documents of the sales side name accounts by
// description and need no change.
//
// It runs as a long operation under the progress title "Modifier le numéro de compte", holding
// the ledger lock from the first file to the record's new key, so no posting lands half on the
// old number and half on the new. Once started it runs to the end: stopping half way would leave
// the ledger naming two numbers for one account. So it also survives a crash: it keeps its own
// notes in a ".renumber" change file (accounts/ledgerintent.h): old and new number and where the
// trail ends, then, once the trail announces it, that it has begun. The next holder of the ledger
// lock that finds the file of a killed renumbering decides from those notes alone: one noted
// begun has every step run again (each leaves what is already done) and is logged as finished;
// one not begun changed nothing, and its announcement, if written, is cancelled ("cancel").
// The account record takes its new key last, in one rename.
//
// One that waited the whole 10,000 ms for the ledger lock goes on without it, as every change
// does, and must not break the holder's audit chain: it writes nothing into the trail. Its
// announcement waits in its begun note, and its file is left to the next holder of the lock, who
// writes the announcement into the chain, runs every step again (the holder it passed may have
// posted under the old number after a day file was rewritten, or to the old record after it took
// its new key) and recomputes the balances from the day files.
//
// That second pass takes every row under the old number for the renumbered account's, so until a
// renumbering is settled both of its numbers stay its own: no account is created under either,
// and no renumbering takes either or leaves the new one (LAccountNumberClearOfRenumbering). An
// account created meanwhile under the freed old number would have its postings moved to the new
// one; one under the new number would keep the record from taking it.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/process.h"

class LProfile;

inline constexpr std::string_view kRenumberFailedMessage = "Le compte n'a pas pu prendre son nouveau numéro.";

struct LAccountRenumberProcess {
  LProfile* profile = nullptr;
  std::string oldNumber;
  std::string newNumber;
  long nRowsChanged = 0;       // day-file rows rewritten
  long nDayFilesChanged = 0;   // day files rewritten
};

// kProcessFailed (with the error set) when the trail could not announce it or its notes could not
// be written (nothing changed), or when a file could not be written or the record could not take
// its new key (a file of that name appeared meanwhile): the renumbering is then left to the next
// holder of the ledger lock.
LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data);

// false (message set) while a renumbering not yet settled names number, as the number it leaves
// or the one it takes: the account must not be created, nor take or leave that number, before
// it is settled. One that only waits for a holder of the ledger lock is settled first when the
// lock can be taken (up to the lock's wait, when another holds it).
[[nodiscard]] bool LAccountNumberClearOfRenumbering(const LProfile& profile, std::string_view number,
                                                    std::string* message);

// Registers the settler of renumberings cut short. Call once at start-up; again changes nothing.
void LAccountRenumberInstall();
