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
     "        LINE: ACCOUNT:AMOUNT[:TAXTEXT]\n"
     "kontavo bill import FILE [--supplier KEY]\n",
     "enregistre et impute une facture fournisseur", LCmdBill},
    {"billpayment",
     "kontavo billpayment add --supplier S --amount AMOUNT [--date D] [--account DESCRIPTION] [--notes TEXT]\n"
     "        [--method TEXT] [--apply BILL=AMOUNT... | --auto]\n",
     "enregistre et impute un paiement fournisseur", LCmdBillPayment},
    {"cheque",
     "kontavo cheque add --account NUMBER --payee TEXT --amount AMOUNT [--date D] [--number N] [--memo TEXT] LINE...\n"
     "        LINE: ACCOUNT:AMOUNT[:MEMO]; --supplier KEY instead of lines: the cheque pays that supplier (a bill payment)\n"
     "kontavo cheque list [--account NUMBER]\n"
     "kontavo cheque void NUMBER [--account NUMBER] [--date D]\n"
     "kontavo cheque delete NUMBER [--account NUMBER]\n"
     "kontavo cheque pdf NUMBER [--account NUMBER] [--out FILE]\n"
     "kontavo cheque next --account NUMBER [N]\n",
     "chèques émis d'un compte bancaire : écriture, annulation, numérotation", LCmdCheque},
    {"cash",
     "kontavo cash add --account NUMBER (--receipt|--payment) --amount AMOUNT [--date D] [--desc TEXT] LINE...\n"
     "        LINE: ACCOUNT:AMOUNT[:MEMO]\n",
     "encaissement ou décaissement d'un compte de caisse ou de banque", LCmdCash},
    {"template",
     "kontavo template add NAME [--desc TEXT] [--type N] [--ref REF] LINE...\n"
     "        LINE: dr:ACCOUNT:AMOUNT or cr:ACCOUNT:AMOUNT\n"
     "kontavo template list\n"
     "kontavo template use NAME [--date D] [--amount AMOUNT] [--ref REF]\n"
     "kontavo template delete NAME\n",
     "modèles d'écritures, saisis de nouveau à une autre date", LCmdTemplate},
    {"budget",
     "kontavo budget add NAME --year YYYY [ACCOUNT=AMOUNT[/AMOUNT...12]]...\n"
     "        un montant annuel (réparti sur les douze mois de l'exercice) ou douze montants mensuels\n"
     "kontavo budget list\n"
     "kontavo budget delete NAME\n",
     "budgets par compte et par mois ; kontavo report budget NAME les compare au réalisé", LCmdBudget},
    {"vehicle",
     "kontavo vehicle add KEY [FIELD=VALUE...]\n"
     "        FIELD: Name, Registration, Kind (car|motorcycle|moped), FiscalHorsepower, Electric (0|1), Notes\n"
     "kontavo vehicle edit KEY FIELD=VALUE...\n"
     "kontavo vehicle list\n"
     "kontavo vehicle show KEY\n"
     "kontavo vehicle delete KEY\n",
     "véhicules, leur puissance fiscale et leur genre au barème kilométrique", LCmdVehicle},
    {"mileage",
     "kontavo mileage add VEHICLE [--date D] (--km N | --start N --end N) [--purpose TEXT]\n"
     "        [--origin TEXT] [--destination TEXT]\n"
     "kontavo mileage list [VEHICLE] [--from D] [--to D]\n"
     "kontavo mileage delete KEY\n"
     "kontavo mileage clear VEHICLE [--from D] [--to D]\n"
     "kontavo mileage scale [YEAR]\n"
     "kontavo mileage scale import FILE\n"
     "        FILE: lines YEAR KIND HP_MIN HP_MAX UP_TO_KM RATE FIXED and YEAR electric PERCENT\n",
     "trajets des véhicules et barème kilométrique ; kontavo report mileage en donne les indemnités", LCmdMileage},
    {"check",
     "kontavo check [--fix]\n",
     "recalcule les soldes des comptes à partir du grand livre", LCmdCheck},
    {"mail",
     "kontavo mail config [--server HOST[:PORT]] [--user U] [--password-stdin] [--sender ADDRESS]\n"
     "                    [--starttls on|off] [--reply-to ADDRESS] [--verify on|off] [--ca-file PEM]\n"
     "kontavo mail send --to ADDRESSES [--subject TEXT] (--body TEXT | --body-file F) [--html-file F]\n"
     "                  [--attach FILE]...\n",
     "réglages des courriels et envoi d'un message", LCmdMail},
    {"vat",
     "kontavo vat config [--vrn NUMBER] [--api URL|sandbox|production] [--ca-file PEM] [--timeout SECONDS]\n"
     "kontavo vat auth [--code CODE]\n"
     "kontavo vat obligations [--from D --to D]\n"
     "kontavo vat submit PERIODKEY [--FIGURE VALUE]...\n"
     "        FIGURE: vatDueSales, vatDueAcquisitions, totalVatDue, vatReclaimedCurrPeriod, netVatDue (pounds),\n"
     "        totalValueSalesExVAT, totalValuePurchasesExVAT, totalValueGoodsSuppliedExVAT, totalAcquisitionsExVAT\n"
     "        (whole pounds); boxes 1, 6 and 8 default to the running figures\n"
     "kontavo vat view PERIODKEY\n",
     "déclaration de TVA britannique auprès de HMRC", LCmdVat},
    {"tax",
     "kontavo tax show\n"
     "kontavo tax set [--count N] [--default K] [--inclusive on|off] [--track-paid on|off] [--name K=TEXT]...\n"
     "    [--rate K=RATE|K=R1/R2/C]... [--zero K=on|off]... [--account K=DESCRIPTION]... [--combined K=A+B]...\n",
     "affiche et règle les taxes", LCmdTax},
    {"customer",
     "kontavo customer add KEY [FIELD=VALUE...]\n"
     "kontavo customer list\n"
     "kontavo customer show KEY\n"
     "kontavo customer retotal [KEY]\n",
     "clients, leur solde et leur plus ancienne échéance", LCmdCustomer},
    {"supplier",
     "kontavo supplier add KEY [Name=TEXT] [Address=TEXT] [Contact=TEXT] [Email=ADRESSE] [Phone=TEXT]\n"
     "    [SIREN=9 CHIFFRES] [VATNumber=FR...] [ExpenseAccount=DESCRIPTION] [PaymentTermsDays=N] [FIELD=VALUE...]\n"
     "kontavo supplier list\n",
     "fournisseurs et leurs coordonnées", LCmdSupplier},
    {"item",
     "kontavo item add CODE [--description TEXT] [--price AMOUNT] [--account DESCRIPTION]\n"
     "    [--kind stock|product|service] [--cost AMOUNT] [--reorder-level QTY] [--reorder-qty QTY]\n"
     "kontavo item edit CODE (les mêmes options que add)\n"
     "kontavo item list\n"
     "kontavo item stock CODE [--date D]\n",
     "articles, leur stock, leur coût moyen et leur seuil de commande", LCmdItem},
    {"salesperson",
     "kontavo salesperson add KEY [Name=TEXT] [Email=ADRESSE] [CommissionRate=POURCENT]\n"
     "kontavo salesperson list\n",
     "vendeurs et leur taux de commission", LCmdSalesPerson},
    {"group",
     "kontavo group add KEY [Description=TEXT] [PriceLevel=POURCENT]\n"
     "kontavo group list\n",
     "groupes de clients et leur remise sur les prix des articles", LCmdGroup},
    {"invoice",
     "kontavo invoice new [--draft] [--number KEY] (--file DOC.json | --customer C [--date D] [--terms now|DAYS]\n"
     "    [--line 'CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %']... [--shipping AMOUNT --shipping-tax NAME]\n"
     "    [--untaxed] [--notes TEXT] [--salesperson KEY])\n"
     "kontavo invoice show KEY\n"
     "kontavo invoice list [--from D] [--to D] [--customer C] [--salesperson KEY] [--drafts]\n"
     "kontavo invoice edit KEY (les mêmes options que new)\n"
     "kontavo invoice record KEY\n"
     "kontavo invoice delete KEY\n"
     "kontavo invoice pdf KEY [--out FILE] [--form NAME] [--facturx [--profile en16931|basic]]\n"
     "kontavo invoice send KEY [--to ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx|--no-facturx]\n"
     "kontavo invoice log KEY\n",
     "factures", LCmdInvoice},
    {"quote",
     "kontavo quote new [--draft] [--number KEY] (--file DOC.json | --customer C [--date D] [--terms now|DAYS]\n"
     "    [--line 'CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %']... [--shipping AMOUNT --shipping-tax NAME]\n"
     "    [--untaxed] [--notes TEXT] [--salesperson KEY])\n"
     "kontavo quote show KEY\n"
     "kontavo quote list [--from D] [--to D] [--customer C] [--salesperson KEY] [--drafts]\n"
     "kontavo quote edit KEY (les mêmes options que new)\n"
     "kontavo quote record KEY\n"
     "kontavo quote convert KEY [--draft]\n"
     "kontavo quote delete KEY\n"
     "kontavo quote pdf KEY [--out FILE] [--form NAME]\n"
     "kontavo quote send KEY [--to ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx|--no-facturx]\n"
     "kontavo quote log KEY\n",
     "devis", LCmdQuote},
    {"order",
     "kontavo order new [--draft] [--number KEY] (--file DOC.json | --customer C [--date D] [--terms now|DAYS]\n"
     "    [--line 'CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %']... [--shipping AMOUNT --shipping-tax NAME]\n"
     "    [--untaxed] [--notes TEXT] [--salesperson KEY])\n"
     "kontavo order show KEY\n"
     "kontavo order list [--from D] [--to D] [--customer C] [--salesperson KEY] [--drafts]\n"
     "kontavo order edit KEY (les mêmes options que new)\n"
     "kontavo order record KEY\n"
     "kontavo order convert KEY [--draft]\n"
     "kontavo order delete KEY\n"
     "kontavo order pdf KEY [--out FILE] [--form NAME]\n"
     "kontavo order send KEY [--to ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx|--no-facturx]\n"
     "kontavo order log KEY\n",
     "commandes clients", LCmdOrder},
    {"creditnote",
     "kontavo creditnote new [--draft] [--number KEY] (--file DOC.json | --customer C [--date D] [--terms now|DAYS]\n"
     "    [--line 'CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %']... [--shipping AMOUNT --shipping-tax NAME]\n"
     "    [--untaxed] [--notes TEXT] [--salesperson KEY])\n"
     "kontavo creditnote show KEY\n"
     "kontavo creditnote list [--from D] [--to D] [--customer C] [--salesperson KEY] [--drafts]\n"
     "kontavo creditnote edit KEY (les mêmes options que new)\n"
     "kontavo creditnote record KEY\n"
     "kontavo creditnote delete KEY\n"
     "kontavo creditnote pdf KEY [--out FILE] [--form NAME] [--facturx [--profile en16931|basic]]\n"
     "kontavo creditnote send KEY [--to ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx|--no-facturx]\n"
     "kontavo creditnote log KEY\n"
     "kontavo creditnote apply KEY INVOICE=AMOUNT...\n",
     "avoirs", LCmdCreditNote},
    {"porder",
     "kontavo porder new [--draft] [--number KEY] (--file DOC.json | --customer C [--date D] [--terms now|DAYS]\n"
     "    [--line 'CODE|DESCRIPTION|QTY|UNIT PRICE|TAX NAME|DISCOUNT %']... [--shipping AMOUNT --shipping-tax NAME]\n"
     "    [--untaxed] [--notes TEXT])\n"
     "kontavo porder show KEY\n"
     "kontavo porder list [--from D] [--to D] [--customer C] [--drafts]\n"
     "kontavo porder edit KEY (les mêmes options que new)\n"
     "kontavo porder record KEY\n"
     "kontavo porder receive KEY [--date D]\n"
     "kontavo porder bill KEY [--date D]\n"
     "kontavo porder delete KEY\n"
     "kontavo porder pdf KEY [--out FILE] [--form NAME]\n"
     "kontavo porder send KEY [--to ADDRESSES] [--subject TEXT] [--body TEXT] [--facturx|--no-facturx]\n"
     "kontavo porder log KEY\n",
     "bons de commande", LCmdPOrder},
    {"payment",
     "kontavo payment add --customer C --amount AMOUNT [--date D] [--account DESCRIPTION] [--refund]\n"
     "    (--apply INVOICE=AMOUNT... | --auto)\n"
     "kontavo payment show KEY\n"
     "kontavo payment list\n"
     "kontavo payment delete KEY\n"
     "kontavo payment pdf KEY [--out FILE]\n",
     "paiements et remboursements des clients, imputés aux factures", LCmdPayment},
    {"packingslip", "kontavo packingslip pdf INVOICE [--order] [--out FILE]\n",
     "imprime le bon de livraison d'une facture (d'une commande avec --order)", LCmdPackingSlip},
    {"shiplabel", "kontavo shiplabel pdf INVOICE [--order] [--out FILE]\n",
     "imprime l'étiquette d'expédition d'une facture (d'une commande avec --order)", LCmdShipLabel},
    {"statement", "kontavo statement pdf CUSTOMER [--date D] [--from D] [--out FILE]\n",
     "imprime le relevé de compte d'un client au --date, depuis --from (le 1er du mois), avec son échéancier",
     LCmdStatement},
    {"recurring",
     "kontavo recurring add (--invoice KEY | --order KEY) --start D --interval CODE\n"
     "        CODE: 0 7 jours, 1 14 jours, 2 mensuel, 3 2 mois, 4 trimestriel, 5 6 mois, 6 annuel, 7 2 ans,\n"
     "        8 et plus jamais\n"
     "kontavo recurring list\n"
     "kontavo recurring run [--all]\n",
     "factures et commandes périodiques", LCmdRecurring},
    {"import",
     "kontavo import ofx FILE [--json]\n"
     "kontavo import csv customers|items|suppliers|salespersons|groups FILE [--map COLONNE=CHAMP,...] [--dry-run]\n",
     "lit un relevé bancaire OFX ; importe des clients, articles ou fournisseurs d'un fichier CSV", LCmdImport},
    {"bank",
     "kontavo bank import FILE --account NUMBER [--format ofx|csv|camt|cfonb|qif|mt940] [--csv-map MAP]\n"
     "        [--statement-account ID]\n"
     "        MAP: date=N,text=N,(amount=N | debit=N,credit=N)[,ref=N][,sep=;][,decimal=comma|point]\n"
     "              [,dates=dmy|mdy][,skip=N][,encoding=utf-8|utf-16|windows-1252]\n"
     "kontavo bank lines --account NUMBER [--unmatched]\n"
     "kontavo bank accept --account NUMBER [LINE[=REF]...] [--all-matched]\n"
     "kontavo bank post --account NUMBER LINE (--to ACCOUNT [--desc TEXT] | --customer C | --supplier S)\n"
     "kontavo bank reconcile --account NUMBER [--date D --balance AMOUNT] [--clear REF...] [--unclear REF...]\n"
     "        [--finish | --cancel]\n"
     "kontavo bank rollback --account NUMBER\n",
     "relevés bancaires : import, rapprochement avec le grand livre, saisie des lignes nouvelles", LCmdBank},
    {"facturx",
     "kontavo facturx read FILE [--json]\n",
     "lit une facture électronique reçue (PDF Factur-X ou XML CII)", LCmdFacturX},
    {"form",
     "kontavo form list\n"
     "kontavo form copy FROM TO\n",
     "liste et copie les formulaires des documents imprimés (dossier Forms de l'entreprise)", LCmdForm},
    {"expr",
     "kontavo expr EXPRESSION [NOM=CENTIMES]... [--json]\n",
     "calcule une expression d'état modèle, sur des champs donnés en centimes", LCmdExpr},
    {"serve",
     "kontavo serve [--port N]\n",
     "lance le service (serveur Web et envoi des courriels) au premier plan", LCmdServe},
    {"desk",
     "kontavo desk [--no-open]\n",
     "ouvre Kontavo dans le navigateur (démarre le service au besoin) ; --no-open affiche le lien", LCmdDesk},
    {"web",
     "kontavo web status\n"
     "kontavo web enable\n"
     "kontavo web disable\n"
     "kontavo web port N\n"
     "kontavo web https on [--cert PEM --key PEM]\n"
     "kontavo web https off\n",
     "réglages du serveur Web ; le service en cours redémarre le serveur", LCmdWeb},
    {"user",
     "kontavo user add EMAIL --name TEXT [--password-stdin] [--admin|--user|--viewer] [--profile NAME]...\n"
     "kontavo user list\n"
     "kontavo user delete EMAIL\n"
     "kontavo user passwd EMAIL [--password-stdin]\n",
     "comptes des utilisateurs Web", LCmdUser},
    {"report",
     "kontavo report NAME [--from D] [--to D] [--date D] [--compare-from D --compare-to D] [--customer KEY]...\n"
     "        [--consolidate B=FACTOR,...] [--format text|csv|json|html|pdf] [--out FILE]\n"
     "        NAME: coa, pl, pl-compare, bs (au --date), tb, cf, vat-obligations, tva-ca3,\n"
     "              aging (au --date), unpaid, invoices, payments, quotes, orders, customers,\n"
     "              customer-sales, items, items-per-customer, salesperson,\n"
     "              inventory (au --date), reorder, movements, reconcile (--account NUMBER, au --date),\n"
     "              statement (--customer KEY), budget BUDGET, mileage [VEHICLE]\n",
     "plan comptable, états financiers, rapports de ventes et obligations de TVA", LCmdReport},
    {"export",
     "kontavo export fec --year YYYY [--out FOLDER] [--utf8]\n"
     "kontavo export fec --check FILE\n"
     "        the file of the fiscal year ending in YYYY, SIRENFECAAAAMMJJ.txt (ISO-8859-15 unless --utf8);\n"
     "        --check applies the tax administration's rules to any such file\n"
     "kontavo export csv customers|items|suppliers|salespersons|groups|ledger [--out FILE]\n"
     "kontavo export journal [--out FILE]\n",
     "FEC et son contrôle, fiches ou écritures en CSV, livres en journal pour ledger et hledger", LCmdExport},
    {"audit", "kontavo audit verify\n",
     "vérifie la chaîne d'empreintes de la piste d'audit des écritures et des documents", LCmdAudit},
    {{}, {}, {}, nullptr},
};

}  // namespace

const LCliCommand* LCliCommands() { return kCommands; }

const LCliCommand* LCliFindCommand(std::string_view name) {
  for (const LCliCommand* command = kCommands; command->run != nullptr; ++command)
    if (command->name == name) return command;
  return nullptr;
}
