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
    {"serve",
     "kontavo serve [--port N]\n",
     "lance le service (serveur Web et envoi des courriels) au premier plan", LCmdServe},
    {"web",
     "kontavo web status\n"
     "kontavo web enable\n"
     "kontavo web disable\n"
     "kontavo web port N\n",
     "réglages du serveur Web ; le service en cours redémarre le serveur", LCmdWeb},
    {"user",
     "kontavo user add EMAIL --name TEXT [--password-stdin] [--admin|--user|--viewer] [--profile NAME]...\n"
     "kontavo user list\n"
     "kontavo user delete EMAIL\n"
     "kontavo user passwd EMAIL [--password-stdin]\n",
     "comptes des utilisateurs Web", LCmdUser},
    {{}, {}, {}, nullptr},
};

}  // namespace

const LCliCommand* LCliCommands() { return kCommands; }

const LCliCommand* LCliFindCommand(std::string_view name) {
  for (const LCliCommand* command = kCommands; command->run != nullptr; ++command)
    if (command->name == name) return command;
  return nullptr;
}
