// kontavo supplier add KEY [FIELD=VALUE...] / supplier list: suppliers, the parties of purchase
// orders and bills, with "Name", "Address", "Contact", "Email", "Phone", "SIREN", "VATNumber",
// "ExpenseAccount" (description of the default expense account) and "PaymentTermsDays".
#include "app/commands.h"
#include "app/partycommand.h"

int LCmdSupplier(LCliContext& context, LCliArgs& args) {
  return LCliPartyCommand(context, args, LPartyKind::kSupplier);
}
