// kontavo salesperson add KEY [FIELD=VALUE...] / salesperson list, and group add KEY
// [FIELD=VALUE...] / group list: sales persons ("Name", "Email", "CommissionRate" in percent)
// and customer groups ("Description", "PriceLevel": percent off list prices), kept and checked as
// invoice/shared/partyfields.h says.
#include "app/commands.h"
#include "app/partycommand.h"

int LCmdSalesPerson(LCliContext& context, LCliArgs& args) {
  return LCliPartyCommand(context, args, LPartyKind::kSalesPerson);
}
int LCmdGroup(LCliContext& context, LCliArgs& args) { return LCliPartyCommand(context, args, LPartyKind::kGroup); }
