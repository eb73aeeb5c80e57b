// Template forms end to end: a copy of the default invoice form changed by the user (fixed text
// at a place, a field, expressions computed and truncated to the cent) prints with --form and,
// once chosen in the options, without it; a form with an unknown element or a broken expression
// prints the default form and says why; an unknown form name is refused.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/pdfreader.h"
#include "tests/support/testhome.h"

namespace {

class TemplateForms : public LHomeTest {
 protected:
  void SetUp() override {
    LSetUpFrenchBusiness();
    // 12 × 3,50 + 2,5 × 40 = 142,00 excluding tax, 149,81 with 5,5 % VAT.
    LExpectSuccess({"invoice", "new", "--number", "F7", "--customer", "C1", "--date", "2026-11-02", "--line",
                    "PAIN|Pain de campagne|12|3.50|Réduite|", "--line", "SAC|Sac de farine T65|2.5|40|Réduite|"});
    LExpectSuccess({"record", "set", "Invoices", "F7", "CustomerPO=BC-2231"});
  }

  // A new form name with text, made from a copy of the default invoice form.
  std::string MakeForm(const std::string& name, const std::string& text) {
    std::string path = LExpectSuccess({"form", "copy", "facture", name});
    path.pop_back();
    std::ofstream(path, std::ios::app) << text;
    return path;
  }

  std::string PrintText(const std::vector<std::string>& extra, std::string* err = nullptr) {
    std::string out = home_.Path() + "/f7.pdf";
    std::vector<std::string> args = {"invoice", "pdf", "F7", "--out", out};
    args.insert(args.end(), extra.begin(), extra.end());
    LRunResult run = LRunKontavo(args);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    if (err != nullptr) *err = run.err;
    return LPdfText(out);
  }
};

TEST_F(TemplateForms, ACopiedFormPrintsItsElementsAndIsChosenPerKind) {
  MakeForm("maison",
           "texte x=120 y=255 largeur=70 taille=11 gras droite \"Merci de votre confiance !\"\n"
           "champ libelle=\"Bon de commande : \" \"CustomerPO\"\n"
           "champ libelle=\"Total enregistré : \" montant \"Total\"\n"
           "expression libelle=\"Acompte de 33,5 % : \" \"Total*0,335\"\n"
           "expression libelle=\"Hors taxes : \" \"Subtotal\"\n"
           "trait\n");
  std::string text = PrintText({"--form", "maison"});
  for (const char* expected : {"FACTURE", "Pain de campagne", "149,81 €", "Merci de votre confiance !",
                               "Bon de commande : BC-2231", "Total enregistré : 149,81 €",
                               // 149,81 × 0,335 = 50,186…: truncated to the cent, not rounded
                               "Acompte de 33,5 % : 50,18 €", "Hors taxes : 142,00 €"})
    EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
  EXPECT_EQ(LKeepPdfRendering(home_.Path() + "/f7.pdf", "template-form"), 1);

  // The default form prints none of it; chosen for the invoices, the copy prints without --form.
  EXPECT_EQ(PrintText({}).find("Merci de votre confiance"), std::string::npos);
  LExpectSuccess({"record", "set", "Misc", "Invoice", "Form=maison"});
  EXPECT_NE(PrintText({}).find("Merci de votre confiance"), std::string::npos);
  std::string names = LExpectSuccess({"form", "list"});
  EXPECT_NE(names.find("facture\n"), std::string::npos) << names;
  EXPECT_NE(names.find("maison\n"), std::string::npos) << names;
}

TEST_F(TemplateForms, ABrokenFormPrintsTheDefaultAndSaysWhy) {
  const std::pair<std::string, std::string> broken[] = {
      {"tableau\n", "élément inconnu « tableau »"},
      {"expression \"Total+Remise\"\n", "Impossile de substituer l'expression."},
      {"expression \"(Total*2\"\n", "Les parenthèses ne sont pas équilibrées"},
      {"texte taille=200 \"Énorme\"\n", "la taille va de 4 à 72 points"},
      {"texte \"Sans fin\n", "guillemet non fermé"},
  };
  int n = 0;
  for (const auto& [line, reason] : broken) {
    std::string name = "casse" + std::to_string(++n);
    MakeForm(name, line);
    std::string err;
    std::string text = PrintText({"--form", name}, &err);
    EXPECT_NE(err.find("Le formulaire « " + name + " » est inutilisable (ligne 12 : " + reason), std::string::npos)
        << err;
    EXPECT_NE(err.find("le formulaire par défaut est utilisé"), std::string::npos) << err;
    EXPECT_NE(text.find("Pain de campagne"), std::string::npos) << text;
  }
  LExpectRefused({"invoice", "pdf", "F7", "--form", "absent"}, "Formulaire introuvable : absent.");
  LExpectRefused({"form", "copy", "facture", "maison/../x"}, "Nom de formulaire non valide : « maison/../x ».");
  LExpectRefused({"form", "copy", "casse1", "facture"}, "Le formulaire « facture » existe déjà.");
  LExpectUsageErrors({{"invoice", "pdf", "F7", "--form", ""}, {"form", "copy", "facture"}, {"form", "delete"}});
}

}  // namespace
