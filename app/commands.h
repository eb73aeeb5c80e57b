// The table of kontavo's commands. Each group of commands lives in its own app/cmd_*.cpp.
#pragma once

#include <string_view>

class LCliArgs;
class LCliContext;

using LCliHandler = int (*)(LCliContext& context, LCliArgs& args);

struct LCliCommand {
  std::string_view name;     // the first word
  std::string_view usage;    // full usage text, one line a form
  std::string_view summary;  // one line for "kontavo help"
  LCliHandler run;
};

// Every command, in the order "kontavo help" lists them. Ends with an entry whose run is null.
const LCliCommand* LCliCommands();
const LCliCommand* LCliFindCommand(std::string_view name);

int LCmdInit(LCliContext& context, LCliArgs& args);
int LCmdRecord(LCliContext& context, LCliArgs& args);
int LCmdSettings(LCliContext& context, LCliArgs& args);
int LCmdBusiness(LCliContext& context, LCliArgs& args);
int LCmdBackup(LCliContext& context, LCliArgs& args);
int LCmdRestore(LCliContext& context, LCliArgs& args);
int LCmdAccount(LCliContext& context, LCliArgs& args);
int LCmdJournal(LCliContext& context, LCliArgs& args);
int LCmdTransfer(LCliContext& context, LCliArgs& args);
int LCmdLedger(LCliContext& context, LCliArgs& args);
int LCmdBill(LCliContext& context, LCliArgs& args);
int LCmdBillPayment(LCliContext& context, LCliArgs& args);
int LCmdCheck(LCliContext& context, LCliArgs& args);
int LCmdCheque(LCliContext& context, LCliArgs& args);
int LCmdCash(LCliContext& context, LCliArgs& args);
int LCmdTemplate(LCliContext& context, LCliArgs& args);
int LCmdBudget(LCliContext& context, LCliArgs& args);
int LCmdVehicle(LCliContext& context, LCliArgs& args);
int LCmdMileage(LCliContext& context, LCliArgs& args);
int LCmdMail(LCliContext& context, LCliArgs& args);
int LCmdVat(LCliContext& context, LCliArgs& args);
int LCmdTax(LCliContext& context, LCliArgs& args);
int LCmdCustomer(LCliContext& context, LCliArgs& args);
int LCmdSupplier(LCliContext& context, LCliArgs& args);
int LCmdItem(LCliContext& context, LCliArgs& args);
int LCmdSalesPerson(LCliContext& context, LCliArgs& args);
int LCmdGroup(LCliContext& context, LCliArgs& args);
int LCmdInvoice(LCliContext& context, LCliArgs& args);
int LCmdQuote(LCliContext& context, LCliArgs& args);
int LCmdOrder(LCliContext& context, LCliArgs& args);
int LCmdCreditNote(LCliContext& context, LCliArgs& args);
// "creditnote apply", reached from the credit-note commands.
int LCmdCreditNoteApply(LCliContext& context, LCliArgs& args);
int LCmdPOrder(LCliContext& context, LCliArgs& args);
int LCmdPayment(LCliContext& context, LCliArgs& args);
int LCmdPackingSlip(LCliContext& context, LCliArgs& args);
int LCmdShipLabel(LCliContext& context, LCliArgs& args);
int LCmdStatement(LCliContext& context, LCliArgs& args);
int LCmdRecurring(LCliContext& context, LCliArgs& args);
int LCmdExport(LCliContext& context, LCliArgs& args);
int LCmdImport(LCliContext& context, LCliArgs& args);
int LCmdImportCsv(LCliContext& context, LCliArgs& args);
int LCmdBank(LCliContext& context, LCliArgs& args);
int LCmdExpr(LCliContext& context, LCliArgs& args);
int LCmdForm(LCliContext& context, LCliArgs& args);
int LCmdFacturX(LCliContext& context, LCliArgs& args);
int LCmdServe(LCliContext& context, LCliArgs& args);
int LCmdDesk(LCliContext& context, LCliArgs& args);
int LCmdWeb(LCliContext& context, LCliArgs& args);
int LCmdUser(LCliContext& context, LCliArgs& args);
int LCmdReport(LCliContext& context, LCliArgs& args);
int LCmdExport(LCliContext& context, LCliArgs& args);
int LCmdAudit(LCliContext& context, LCliArgs& args);
