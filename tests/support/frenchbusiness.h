// A French business for the tests of printed documents and e-invoices, set up through the real
// binary: euros written "1 234,56 €", dates "20/11/2026", the seller's legal identity (SARL,
// capital, SIREN, SIRET, RCS, VAT number), the taxes "TVA" 20 % (default) and "Réduite" 5,5 %,
// the business customer "C1" (with a SIREN and a VAT number) and the private customer "P1".
#pragma once

void LSetUpFrenchBusiness();
