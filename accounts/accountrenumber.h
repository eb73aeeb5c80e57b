// Changing an account's number everywhere it is stored: column 4 of every day-file row that names
// it, the names of its reconciliation file and of its statement lines, the linked-account slots,
// the bills that name it as payable or item account, the journal entry's remembered account,
// and finally the key of the account record itself. Documents of the sales side name accounts by
// description and need no change.
//
// It runs as a long operation under the progress title "Modifier le numéro de compte", holding
// the ledger lock from the first file to the record's new key, so no posting lands half on the
// old number and half on the new. Once started it runs to the end: stopping half way would leave
// the ledger naming two numbers for one account. So it also survives a crash: before the audit
// trail announces it, it notes old and new number in a ".renumber" intent file
// (accounts/ledgerintent.h); the next holder of the ledger lock that finds the file of a killed
// renumbering runs every step again (each leaves what is already done) when the announcement is
// in the trail, and logs that it finished it. The account record takes its new key last, in one
// rename.
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

// kProcessFailed (with the error set) when the trail could not announce it (nothing changed), or
// when a file could not be written or the record could not take its new key (a file of that name
// appeared meanwhile): the renumbering is then left to the next holder of the ledger lock.
LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data);

// Registers the settler of renumberings cut short. Call once at start-up; again changes nothing.
void LAccountRenumberInstall();
