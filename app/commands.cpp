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
    {"account",
     "kontavo account list [--all]\n"
     "kontavo account add NUMBER --name TEXT --type asset|liability|equity|income|expense [--subclass N] [--header]\n"
     "        [--cash] [--class N] [--tax-included] [--opening AMOUNT] [--linked SLOT]\n"
     "kontavo account edit NUMBER [--number NEW] [--name TEXT] [--header on|off] [--cash on|off]\n"
     "        [--tax-included on|off] [--subclass N] [--class N] [--opening AMOUNT] [--linked SLOT] [--yes]\n"
     "kontavo account delete NUMBER... [--yes]\n"
     "kontavo account restore NUMBER\n"
     "kontavo account linked [SLOT=NUMBER[:DESCRIPTION]...]\n"
     "kontavo account defaults\n",
     "le plan comptable et les comptes associés", LCmdAccount},
    {"journal",
     "kontavo journal add [--date D] [--type N] --ref REF --desc TEXT LINE...\n"
     "kontavo journal edit DATE REF [--date D] [--type N] [--ref REF] [--desc TEXT] [LINE...]\n"
     "        LINE: dr:ACCOUNT:AMOUNT or cr:ACCOUNT:AMOUNT; N: 0 Paiements, 1 Reçus, 2 Recettes, 3 Achats, 4 General\n"
     "        a REF containing \"[\" takes the next number of the type's counter (GJ[auto])\n",
     "saisit ou modifie une écriture de journal", LCmdJournal},
    {"transfer",
     "kontavo transfer --from ACCOUNT --to ACCOUNT --amount AMOUNT [--date D]\n",
     "transfère un montant d'un compte à un autre", LCmdTransfer},
    {"ledger",
     "kontavo ledger [--from D] [--to D] [--account NUMBER]\n"
     "kontavo ledger delete DATE REF\n",
     "affiche les lignes du grand livre ou supprime une transaction", LCmdLedger},
    {"bill",
     "kontavo bill add --supplier S [--date D] [--notes TEXT] [--account NUMBER] [--ref REF] LINE... [--tax K=AMOUNT]...\n"
     "        LINE: ACCOUNT:AMOUNT[:TAXTEXT]\n",
     "enregistre et impute une facture fournisseur", LCmdBill},
    {"billpayment",
     "kontavo billpayment add --supplier S --amount AMOUNT [--date D] [--account DESCRIPTION] [--notes TEXT]\n"
     "        [--method TEXT]\n",
     "enregistre et impute un paiement fournisseur", LCmdBillPayment},
    {"check",
     "kontavo check [--fix]\n",
     "recalcule les soldes des comptes à partir du grand livre", LCmdCheck},
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
