// The "add" and "list" forms shared by the commands of customers, suppliers, sales persons and
// customer groups: records of invoice/shared/partyfields.h.
#pragma once

#include <string>
#include <vector>

#include "invoice/shared/partyfields.h"

class LCliArgs;
class LCliContext;
class LProfile;

// add KEY [FIELD=VALUE...] (words as given, "add" first): creates the record through LPartySave,
// which checks the fields; exit 1 with its message when refused, 2 for a word without "=".
int LCliPartyAdd(LCliContext& context, LProfile& profile, LPartyKind kind, const std::vector<std::string>& words);
// One line a record in key order: the key, then each field of the kind as typed text, tab
// between; --json: an array of objects.
int LCliPartyList(LCliContext& context, LProfile& profile, LPartyKind kind);
// The whole command "add KEY [FIELD=VALUE...]" or "list" for records of kind.
int LCliPartyCommand(LCliContext& context, LCliArgs& args, LPartyKind kind);
