// kontavo creditnote apply KEY INVOICE=AMOUNT...: a recorded credit note applied to invoices of
// its customer, as a refund of them.
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "app/paymentinput.h"
#include "invoice/sales/paymentbook.h"

int LCmdCreditNoteApply(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 3)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::vector<LAppliedAmount> applications;
  if (!LCliParseApplications(*profile, {words.begin() + 2, words.end()}, applications, error))
    return context.Usage(error);
  if (!LCreditNoteApply(*profile, words[1], applications, &error)) return context.Fail(error);
  return kExitOk;
}
