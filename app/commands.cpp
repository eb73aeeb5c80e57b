#include "app/commands.h"

#include "app/startwizardoptions.h"

namespace {

constexpr LCliCommand kCommands[] = {
    {"init",
     "kontavo init [WIZARD OPTIONS]\n"
     "  WIZARD OPTIONS (the start wizard, run when the business has no company name yet):\n"
     KONTAVO_START_WIZARD_OPTIONS_USAGE,
     "ouvre l'entreprise (l'initialise au premier usage) et affiche son dossier", LCmdInit},
    {"business",
     "kontavo business list\n"
     "kontavo business add [WIZARD OPTIONS]\n"
     "kontavo business use B\n"
     "kontavo business delete B [--yes]\n"
     "  WIZARD OPTIONS (without --name on a terminal, every question is asked):\n"
     KONTAVO_START_WIZARD_OPTIONS_USAGE,
     "liste, ajoute, choisit et supprime les entreprises", LCmdBusiness},
    {"backup", "kontavo backup DEST\n", "sauvegarde toutes les entreprises dans un nouveau dossier de DEST", LCmdBackup},
    {"restore", "kontavo restore SRC [--yes]\n", "restaure les données depuis le dossier de sauvegarde SRC",
     LCmdRestore},
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
    {{}, {}, {}, nullptr},
};

}  // namespace

const LCliCommand* LCliCommands() { return kCommands; }

const LCliCommand* LCliFindCommand(std::string_view name) {
  for (const LCliCommand* command = kCommands; command->run != nullptr; ++command)
    if (command->name == name) return command;
  return nullptr;
}
