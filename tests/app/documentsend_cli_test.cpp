// Sending documents by e-mail with the real binary and the real SMTP server on loopback: the
// customer's address and the texts of the options by default, the Factur-X PDF of a French
// invoice attached and readable, a refused recipient leaving the e-mail state "failed" with the
// server's message, and the document's history (created, printed, e-mailed) read back.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/pdfreader.h"
#include "tests/support/smtptestserver.h"

namespace {

class DocumentSend : public LHomeTest {
 protected:
  void SetUp() override {
    LSetUpFrenchBusiness();
    LExpectSuccess({"record", "set", "Customers", "C1", "Email=achats@martin.fr"});
    LExpectSuccess({"invoice", "new", "--number", "F7", "--customer", "C1", "--date", "2026-11-02", "--line",
                    "PAIN|Pain de campagne|12|3.50|Réduite|"});
  }
};

TEST_F(DocumentSend, InvoiceGoesToTheCustomerWithItsFacturXPdf) {
  LSmtpTestServer server(home_.Path() + "/smtp", {});
  ASSERT_TRUE(server.IsRunning());
  LExpectSuccess({"mail", "config", "--server", server.Address(), "--starttls", "off", "--sender", "compta@dupuis.fr"});
  LExpectSuccess({"invoice", "pdf", "F7", "--out", home_.Path() + "/printed.pdf"});
  EXPECT_EQ(LExpectSuccess({"invoice", "send", "F7"}), "achats@martin.fr\n");

  ASSERT_EQ(server.MessageCount(), 1);
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["rcptTos"], nlohmann::json({"achats@martin.fr"}));
  EXPECT_EQ(message["subject"], "Atelier Dupuis : Facture F7");
  ASSERT_EQ(message["parts"].size(), 2u) << message.dump();
  EXPECT_NE(server.Part(1, 0).find("Veuillez trouver ci-joint notre facture F7 d'un montant de 44,31 €."),
            std::string::npos)
      << server.Part(1, 0);
  EXPECT_EQ(message["parts"][1]["filename"], "Facture-F7.pdf");
  // The attachment is the Factur-X PDF/A-3 of the invoice, whole: poppler reads it and finds the
  // e-invoice inside.
  std::string received = home_.Path() + "/received.pdf";
  LWriteFile(received, server.Part(1, 1));
  EXPECT_EQ(LPdfInfo(received, "Pages"), "1");
  EXPECT_NE(LPdfText(received).find("Pain de campagne"), std::string::npos);
  LRunResult detached = LRunProgram("/usr/bin/pdfdetach", {"-list", received});
  EXPECT_NE(detached.out.find("factur-x.xml"), std::string::npos) << detached.out;

  // Other recipients, subject and text; a plain PDF.
  LExpectSuccess({"invoice", "send", "F7", "--to", "a@martin.fr, b@martin.fr", "--subject", "Votre facture", "--body",
                  "Voici la facture.", "--no-facturx"});
  ASSERT_EQ(server.MessageCount(), 2);
  EXPECT_EQ(server.Message(2)["rcptTos"], nlohmann::json({"a@martin.fr", "b@martin.fr"}));
  EXPECT_EQ(server.Message(2)["subject"], "Votre facture");
  LWriteFile(received, server.Part(2, 1));
  EXPECT_EQ(LRunProgram("/usr/bin/pdfdetach", {"-list", received}).out.find("factur-x.xml"), std::string::npos);

  nlohmann::json log = LRunKontavoJson({"invoice", "log", "F7"});
  ASSERT_EQ(log["events"].size(), 4u) << log.dump();
  EXPECT_EQ(log["events"][0]["action"], "Enregistré");
  EXPECT_EQ(log["events"][1]["action"], "Imprimé");
  EXPECT_EQ(log["events"][1]["detail"], "Facture-F7.pdf");
  EXPECT_EQ(log["events"][2]["action"], "Envoyé par courriel");
  EXPECT_EQ(log["events"][2]["detail"], "achats@martin.fr");
  EXPECT_EQ(log["events"][3]["detail"], "a@martin.fr, b@martin.fr");
  EXPECT_EQ(log["emailState"], "sent");
}

TEST_F(DocumentSend, RefusedRecipientLeavesTheStateFailedWithTheServersMessage) {
  LSmtpTestServer::Options options;
  options.refusedRecipients = {"achats@martin.fr"};
  LSmtpTestServer server(home_.Path() + "/smtp", options);
  ASSERT_TRUE(server.IsRunning());
  LExpectSuccess({"mail", "config", "--server", server.Address(), "--starttls", "off"});
  LRunResult run = LRunKontavo({"invoice", "send", "F7"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.err.find("(550)"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("Recipient address rejected"), std::string::npos) << run.err;
  EXPECT_EQ(server.MessageCount(), 0);
  nlohmann::json log = LRunKontavoJson({"invoice", "log", "F7"});
  EXPECT_EQ(log["emailState"], "failed");
  EXPECT_NE(log["emailError"].get<std::string>().find("Recipient address rejected"), std::string::npos);
  EXPECT_EQ(log["events"].back()["action"], "Échec de l'envoi");

  // A customer without an address: nothing is sent, the user is told what to do.
  LExpectSuccess({"quote", "new", "--number", "D1", "--customer", "P1", "--line", "|Cours|1|40|TVA|"});
  LExpectRefused({"quote", "send", "D1"},
                 "Aucune adresse de courriel pour « P1 » : indiquez-la dans sa fiche ou donnez les destinataires.");
  LExpectRefused({"quote", "send", "D1", "--to", "pas-une-adresse"}, "Adresse de courriel non valide : pas-une-adresse");
  LExpectRefused({"quote", "send", "D1", "--to", "p@petit.fr", "--facturx"},
                 "Seules les factures et les avoirs sont en Factur-X.");
  LExpectRefused({"invoice", "send", "F9"}, "Document introuvable : F9.");
  EXPECT_EQ(server.MessageCount(), 0);
}

}  // namespace
