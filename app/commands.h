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
