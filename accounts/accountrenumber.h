// Changing an account's number everywhere it is stored: column 4 of every day-file row that names
// it, the names of its reconciliation file and of its statement lines, the linked-account slots,
// the bills that name it as payable or item account, the journal entry's remembered account,
// and finally the key of the account record itself. Documents of the sales side name accounts by
// description and need no change.
//
// It runs as a long operation under the progress title "Modifier le numéro de compte", holding
// the ledger lock from the first file to the record's new key, so no posting lands half on the
// old number and half on the new. Once started it runs to the end: stopping half way would leave
// the ledger naming two numbers for one account.
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

// kProcessFailed (with the error set) when the record could not take its new key, for instance
// because a file of that name appeared meanwhile; the ledger then already names the new number.
LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data);
