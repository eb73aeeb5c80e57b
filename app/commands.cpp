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
    {"import",
     "kontavo import ofx FILE [--json]\n",
     "lit un relevé bancaire OFX et affiche son compte, sa période, son solde et ses lignes", LCmdImport},
    {"expr",
     "kontavo expr EXPRESSION [NOM=CENTIMES]... [--json]\n",
     "calcule une expression d'état modèle, sur des champs donnés en centimes", LCmdExpr},
    {{}, {}, {}, nullptr},
};

}  // namespace

const LCliCommand* LCliCommands() { return kCommands; }

const LCliCommand* LCliFindCommand(std::string_view name) {
  for (const LCliCommand* command = kCommands; command->run != nullptr; ++command)
    if (command->name == name) return command;
  return nullptr;
}
