#include "tests/support/frenchbusiness.h"

#include "tests/app/clitest.h"

void LSetUpFrenchBusiness() {
  LExpectSuccess({"account", "defaults"});
  LExpectSuccess({"record", "set", "Misc", "Options", "CountryCode=FR", "CurrencyType=EUR", "CurrencySymbol=€",
                  "CurrencyOrder=3", "DecimalSymbol=,", "ThousandsSymbol= ", "PrintedDateOrder=1",
                  "PrintedDateSeparator=/"});
  LExpectSuccess({"record", "set", "Misc", "Company", "Name=Atelier Dupuis", "Address=12 rue des Lilas\n69003 Lyon",
                  "SIREN=123456789", "SIRET=12345678900012", "VATNumber=FR32123456789", "LegalForm=SARL",
                  "ShareCapital=1000000", "RCS=RCS Lyon", "LatePenaltyRate=12.500000", "Email=compta@dupuis.fr"});
  LExpectSuccess({"tax", "set", "--count", "2", "--name", "1=TVA", "--rate", "1=20", "--name", "2=Réduite", "--rate",
                  "2=5.5", "--default", "1"});
  LExpectSuccess({"customer", "add", "C1", "Name=Boulangerie Martin", "Address=3 place Bellecour\n69002 Lyon",
                  "SIREN=987654321", "VATNumber=FR11987654321"});
  LExpectSuccess({"customer", "add", "P1", "Name=Jeanne Petit", "Address=8 quai Rambaud\n69002 Lyon"});
}
