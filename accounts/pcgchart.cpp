#include "accounts/pcgchart.h"

#include "accounts/chartrows.h"
#include "invoice/shared/company.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"

namespace {

constexpr bool H = true;  // heading
constexpr bool C = true;  // cash
constexpr AccountType A = kAccountAsset;
constexpr AccountType L = kAccountLiability;
constexpr AccountType E = kAccountEquity;
constexpr AccountType I = kAccountIncome;
constexpr AccountType X = kAccountExpense;
constexpr AccountClassification k0 = kClassificationNone;
constexpr AccountClassification k1 = kClassificationOperating;
constexpr AccountClassification k2 = kClassificationInvesting;
constexpr AccountClassification k3 = kClassificationFinancing;

// Sub-classes of the statements: expenses 0 purchases, 1 operating, 2 financial and other;
// income 0 sales, 1 other income.
const LChartRow kPcgChart[] = {
    {"100000", "Comptes de capitaux", E, 0, H, false, k3, false, 0, "", ""},
    {"101000", "Capital", E, 0, false, false, k3, false, 0, "", ""},
    {"106000", "Réserves", E, 0, false, false, k3, false, 0, "", ""},
    {"108000", "Compte de l'exploitant", E, 0, false, false, k3, false, 0, "", ""},
    {"110000", "Report à nouveau (solde créditeur)", E, 0, false, false, k3, false, 0, "", ""},
    {"119000", "Report à nouveau (solde débiteur)", E, 0, false, false, k3, false, 0, "", ""},
    {"120000", "Résultat de l'exercice (bénéfice)", E, 0, false, false, k3, false, 0, "", ""},
    {"129000", "Résultat de l'exercice (perte)", E, 0, false, false, k3, false, 0, "", ""},
    {"160000", "Emprunts et dettes assimilées", L, 0, H, false, k3, false, 0, "", ""},
    {"164000", "Emprunts auprès des établissements de crédit", L, 0, false, false, k3, false, 0, "", ""},

    {"200000", "Comptes d'immobilisations", A, 0, H, false, k2, false, 0, "", ""},
    {"205000", "Concessions, brevets, licences, logiciels", A, 0, false, false, k2, false, 0, "", ""},
    {"210000", "Immobilisations corporelles", A, 0, H, false, k2, false, 0, "", ""},
    {"215400", "Matériel industriel", A, 0, false, false, k2, false, 0, "", ""},
    {"218200", "Matériel de transport", A, 0, false, false, k2, false, 0, "", ""},
    {"218300", "Matériel de bureau et matériel informatique", A, 0, false, false, k2, false, 0, "", ""},
    {"218400", "Mobilier", A, 0, false, false, k2, false, 0, "", ""},
    {"280000", "Amortissements des immobilisations", A, 0, H, false, k2, false, 0, "", ""},
    {"280500", "Amortissements des logiciels", A, 0, false, false, k2, false, 0, "", ""},
    {"281540", "Amortissements du matériel industriel", A, 0, false, false, k2, false, 0, "", ""},
    {"281820", "Amortissements du matériel de transport", A, 0, false, false, k2, false, 0, "", ""},
    {"281830", "Amortissements du matériel de bureau et informatique", A, 0, false, false, k2, false, 0, "", ""},
    {"281840", "Amortissements du mobilier", A, 0, false, false, k2, false, 0, "", ""},

    {"300000", "Comptes de stocks et en-cours", A, 0, H, false, k1, false, 0, "", ""},
    {"310000", "Matières premières", A, 0, false, false, k1, false, 0, "", ""},
    {"355000", "Produits finis", A, 0, false, false, k1, false, 0, "", ""},
    {"370000", "Stocks de marchandises", A, 0, false, false, k1, false, 0, "", ""},

    {"400000", "Comptes de tiers", L, 0, H, false, k1, false, 0, "", ""},
    {"401000", "Fournisseurs", L, 0, false, false, k1, false, 7, "", ""},
    {"404000", "Fournisseurs d'immobilisations", L, 0, false, false, k2, false, 0, "", ""},
    {"411000", "Clients", A, 0, false, false, k1, false, 2, "", ""},
    {"421000", "Personnel - rémunérations dues", L, 0, false, false, k1, false, 0, "", ""},
    {"431000", "Sécurité sociale", L, 0, false, false, k1, false, 0, "", ""},
    {"437000", "Autres organismes sociaux", L, 0, false, false, k1, false, 0, "", ""},
    {"440000", "État et autres collectivités publiques", L, 0, H, false, k1, false, 0, "", ""},
    {"444000", "État - impôts sur les bénéfices", L, 0, false, false, k1, false, 0, "", ""},
    {"445510", "TVA à décaisser", L, 0, false, false, k1, false, 0, "", ""},
    {"445620", "TVA déductible sur immobilisations", A, 0, false, false, k1, false, 0, "", ""},
    {"445660", "TVA déductible", A, 0, false, false, k1, false, 6, "", ""},
    {"445670", "Crédit de TVA à reporter", A, 0, false, false, k1, false, 0, "", ""},
    {"445710", "TVA collectée", L, 0, false, false, k1, false, 5, "", ""},
    {"455000", "Associés - comptes courants", L, 0, false, false, k3, false, 0, "", ""},
    {"467000", "Autres comptes débiteurs ou créditeurs", A, 0, false, false, k1, false, 0, "", ""},

    {"500000", "Comptes financiers", A, 0, H, false, k0, false, 0, "", ""},
    {"512000", "Banque", A, 0, false, C, k0, false, 1, "", ""},
    {"519000", "Concours bancaires courants", L, 0, false, C, k0, false, 0, "", ""},
    {"530000", "Caisse", A, 0, false, C, k0, false, 0, "", ""},
    {"580000", "Virements internes", A, 0, false, C, k0, false, 0, "", ""},

    {"600000", "Comptes de charges", X, 0, H, false, k0, false, 0, "", ""},
    {"601000", "Achats stockés - matières premières", X, 0, false, false, k0, false, 0, "", ""},
    {"606100", "Fournitures non stockables (eau, énergie)", X, 1, false, false, k0, false, 0, "", ""},
    {"606400", "Fournitures administratives", X, 1, false, false, k0, false, 0, "", ""},
    {"607000", "Achats de marchandises", X, 0, false, false, k0, false, 9, "", ""},
    {"610000", "Services extérieurs", X, 1, H, false, k0, false, 0, "", ""},
    {"613200", "Locations immobilières", X, 1, false, false, k0, false, 0, "", ""},
    {"615000", "Entretien et réparations", X, 1, false, false, k0, false, 0, "", ""},
    {"616000", "Primes d'assurances", X, 1, false, false, k0, false, 0, "", ""},
    {"620000", "Autres services extérieurs", X, 1, H, false, k0, false, 0, "", ""},
    {"622600", "Honoraires", X, 1, false, false, k0, false, 0, "", ""},
    {"623000", "Publicité, publications, relations publiques", X, 1, false, false, k0, false, 0, "", ""},
    {"624100", "Transports sur achats", X, 0, false, false, k0, false, 8, "", ""},
    {"625100", "Voyages et déplacements", X, 1, false, false, k0, false, 0, "", ""},
    {"626000", "Frais postaux et de télécommunications", X, 1, false, false, k0, false, 0, "", ""},
    {"627000", "Services bancaires et assimilés", X, 1, false, false, k0, false, 0, "", ""},
    {"630000", "Impôts, taxes et versements assimilés", X, 1, H, false, k0, false, 0, "", ""},
    {"635100", "Impôts directs (hors impôts sur les bénéfices)", X, 1, false, false, k0, false, 0, "", ""},
    {"640000", "Charges de personnel", X, 1, H, false, k0, false, 0, "", ""},
    {"641000", "Rémunérations du personnel", X, 1, false, false, k0, false, 0, "", ""},
    {"645000", "Charges de sécurité sociale et de prévoyance", X, 1, false, false, k0, false, 0, "", ""},
    {"650000", "Autres charges de gestion courante", X, 1, H, false, k0, false, 0, "", ""},
    {"651000", "Redevances pour concessions, brevets, licences", X, 1, false, false, k0, false, 0, "", ""},
    {"660000", "Charges financières", X, 2, H, false, k0, false, 0, "", ""},
    {"661000", "Charges d'intérêts", X, 2, false, false, k0, false, 0, "", ""},
    {"670000", "Charges exceptionnelles", X, 2, H, false, k0, false, 0, "", ""},
    {"671000", "Charges exceptionnelles sur opérations de gestion", X, 2, false, false, k0, false, 0, "", ""},
    {"680000", "Dotations aux amortissements et provisions", X, 1, H, false, k0, false, 0, "", ""},
    {"681100", "Dotations aux amortissements des immobilisations", X, 1, false, false, k0, false, 0, "", ""},
    {"690000", "Impôts sur les bénéfices", X, 2, H, false, k0, false, 0, "", ""},
    {"695000", "Impôts sur les bénéfices dus", X, 2, false, false, k0, false, 0, "", ""},

    {"700000", "Comptes de produits", I, 0, H, false, k0, false, 0, "", ""},
    {"701000", "Ventes de produits finis", I, 0, false, false, k0, false, 0, "", ""},
    {"706000", "Prestations de services", I, 0, false, false, k0, false, 3, "", ""},
    {"707000", "Ventes de marchandises", I, 0, false, false, k0, false, 0, "", ""},
    {"708500", "Ports et frais facturés", I, 0, false, false, k0, false, 4, "", ""},
    {"740000", "Subventions d'exploitation", I, 0, false, false, k0, false, 0, "", ""},
    {"760000", "Produits financiers", I, 1, H, false, k0, false, 0, "", ""},
    {"768000", "Autres produits financiers", I, 1, false, false, k0, false, 0, "", ""},
    {"770000", "Produits exceptionnels", I, 1, H, false, k0, false, 0, "", ""},
    {"771000", "Produits exceptionnels sur opérations de gestion", I, 1, false, false, k0, false, 0, "", ""},

    {"890000", "Bilan d'ouverture", E, 0, false, false, k3, false, 0, "", ""},
};

}  // namespace

bool LAccountListCreatePCG(LProfile& profile) {
  LRecord company;
  profile.List(kMiscList).OpenAlways(company, kCompanyRecord);
  company.SetInt("NumberOfDigits", kPcgAccountDigits);
  if (!company.Flush() || !LAccountListApplyChartRows(profile, kPcgChart, true)) return false;
  LTaxOptions tax;
  tax.OpenFrom(profile);
  for (int n = 1, count = tax.GetTaxCount(); n <= count; ++n) {
    tax.SetTaxAccountPayable(n, kPcgVatCollected);
    tax.SetString(LTaxOptions::TaxField("TaxAccountPaid", n), kPcgVatDeductible);
  }
  return tax.Flush() && LAccountsCreateTaxAccounts(profile);
}
