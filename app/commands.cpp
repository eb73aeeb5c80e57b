#include "app/commands.h"

namespace {

constexpr LCliCommand kCommands[] = {
    {"init",
     "kontavo init [WIZARD OPTIONS]\n",
     "ouvre l'entreprise (l'initialise au premier usage) et affiche son dossier", LCmdInit},
    {"record",
     "kontavo record list LIST\n"
     "kontavo record get LIST KEY [FIELD]\n"
     "kontavo record set LIST KEY NAME=VALUE...\n"
     "kontavo record unset LIST KEY NAME...\n"
     "kontavo record new LIST NAME=VALUE...\n"
     "kontavo record rename LIST KEY NEWKEY\n"
     "kontavo record delete LIST KEY\n",
     "lit et écrit les fiches des listes de l'entreprise", LCmdRecord},
    {"settings",
     "kontavo settings get GROUP KEY\n"
     "kontavo settings set GROUP KEY VALUE\n",
     "lit et écrit les réglages de l'utilisateur", LCmdSettings},
    {"mail",
     "kontavo mail config [--server HOST[:PORT]] [--user U] [--password-stdin] [--sender ADDRESS]\n"
     "                    [--starttls on|off] [--reply-to ADDRESS] [--verify on|off] [--ca-file PEM]\n"
     "kontavo mail send --to ADDRESSES [--subject TEXT] (--body TEXT | --body-file F) [--html-file F]\n"
     "                  [--attach FILE]...\n",
     "réglages des courriels et envoi d'un message", LCmdMail},
    {{}, {}, {}, nullptr},
};

}  // namespace

const LCliCommand* LCliCommands() { return kCommands; }

const LCliCommand* LCliFindCommand(std::string_view name) {
  for (const LCliCommand* command = kCommands; command->run != nullptr; ++command)
    if (command->name == name) return command;
  return nullptr;
}
