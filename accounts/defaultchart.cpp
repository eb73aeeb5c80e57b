// The chart of accounts every new business starts with. Rows are taken in table order; a row
// with an include list is made only for those countries, one with an exclude list for every
// other country. The tax accounts 2390 and 2410 therefore carry the name of the country's tax.
#include "accounts/accounts.h"
#include "accounts/chartrows.h"

namespace {

constexpr bool H = true;   // heading
constexpr bool C = true;   // cash
constexpr bool T = true;   // tax included
constexpr AccountClassification k0 = kClassificationNone;
constexpr AccountClassification k1 = kClassificationOperating;
constexpr AccountClassification k3 = kClassificationFinancing;

const LChartRow kDefaultChart[] = {
    {"1110", "Compte-chèque", kAccountAsset, 0, false, C, k0, false, 1, "", ""},
    {"1120", "Compte épargne", kAccountAsset, 0, false, C, k0, false, 0, "", ""},
    {"1150", "Fonds non déposés", kAccountAsset, 0, false, C, k0, false, 1, "", ""},
    {"1190", "Fonds de caisse", kAccountAsset, 0, false, C, k0, false, 0, "", ""},
    {"1210", "Comptes clients", kAccountAsset, 0, false, false, k1, false, 2, "", ""},
    {"1310", "Stock", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    // Fixed assets and their depreciation are classified with operations on purpose.
    {"1510", "Mobilier", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"1511", "Amortissement cumulé sur mobilier", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"1530", "Ordinateurs", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"1531", "Amortissement cumulé sur ordinateurs", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"1540", "Véhicules", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"1541", "Amortissement cumulé sur véhicules", kAccountAsset, 0, false, false, k1, false, 0, "", ""},
    {"2110", "Carte de crédit", kAccountLiability, 0, false, C, k0, false, 0, "", ""},
    {"2150", "Prêt", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2210", "Comptes fournisseurs", kAccountLiability, 0, false, false, k1, false, 7, "", ""},
    {"2320", "Salaires à verser", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2330", "Cotisation retraite à verser", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2340", "Cotisation santé à verser", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2350", "Charges salariales à verser", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2380", "Impôts sur le revenu à verser", kAccountLiability, 0, false, false, k1, false, 0, "", ""},
    {"2390", "Autres charges à verser", kAccountLiability, 0, false, false, k1, false, 6, "", "AU GB IE NZ ZA"},
    {"2410", "Taxe à la vente perçue", kAccountLiability, 0, false, false, k1, false, 5, "", "AU GB IE NZ ZA"},
    {"2390", "TPS versée", kAccountLiability, 0, false, false, k1, false, 6, "AU NZ", ""},
    {"2410", "TPS perçue", kAccountLiability, 0, false, false, k1, false, 5, "AU NZ", ""},
    {"2390", "TVA versée", kAccountLiability, 0, false, false, k1, false, 6, "GB IE ZA", ""},
    {"2410", "TVA perçue", kAccountLiability, 0, false, false, k1, false, 5, "GB IE ZA", ""},
    {"3010", "Capital émis", kAccountEquity, 0, false, false, k3, false, 0, "", ""},
    {"3020", "Fonds investis", kAccountEquity, 0, false, false, k3, false, 0, "", ""},
    {"3030", "Retraits", kAccountEquity, 0, false, false, k3, false, 0, "", ""},
    {"3040", "Distribution de dividendes", kAccountEquity, 0, false, false, k3, false, 0, "", ""},
    {"3999", "Comptabilité historique", kAccountEquity, 0, false, false, k3, false, 0, "", ""},
    {"4110", "Recettes générales", kAccountIncome, 0, false, false, k0, false, 3, "", ""},
    {"4210", "Frais de port perçus", kAccountIncome, 0, false, false, k0, false, 4, "", ""},
    {"4910", "Revenu d'intérêt", kAccountIncome, 1, false, false, k0, false, 0, "", ""},
    {"6110", "Achats de produits généraux", kAccountExpense, 0, false, false, k0, T, 9, "", ""},
    {"6190", "Frais de port payés", kAccountExpense, 0, false, false, k0, T, 8, "", ""},
    {"6210", "Salaires et traitements", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6260", "Sous-traitance", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6300", "Publicité et promotion", kAccountExpense, 1, H, false, k0, T, 0, "", ""},
    {"6310", "Publicité", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6320", "Site Web", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6350", "Promotions", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6410", "Loyer", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6420", "Frais généraux et de bureau", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6430", "Frais de téléphonie et d'Internet", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6510", "Assurances", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6550", "Frais de justice", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6580", "Comptabilité", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6610", "Véhicule motorisé", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6650", "Réparations et entretien", kAccountExpense, 1, false, false, k0, T, 0, "", ""},
    {"6910", "Frais financiers", kAccountExpense, 2, false, false, k0, T, 0, "", ""},
    {"6920", "Amortissement", kAccountExpense, 2, false, false, k0, T, 0, "", ""},
    {"6930", "Impôts sur le revenu versés", kAccountExpense, 2, false, false, k0, T, 0, "", ""},
};

}  // namespace

bool LAccountListCreateDefault(LProfile& profile) {
  // The sub-class of these accounts follows from their numbers.
  return LAccountListApplyChartRows(profile, kDefaultChart, false) && LAccountsCreateTaxAccounts(profile);
}
