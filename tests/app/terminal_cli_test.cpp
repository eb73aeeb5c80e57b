// The questions of the command line on a real terminal: kontavo runs on a pseudo-terminal and
// the test types the answers, as a user would.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/app/clitest.h"
#include "tests/support/tree.h"

namespace {

constexpr int kAnswerTimeoutMs = 20000;

// Runs kontavo on a new pseudo-terminal (its standard input, output and error), types input
// and returns all it wrote (echo of the typed text included) with its exit status.
LRunResult RunOnTerminal(const std::vector<std::string>& args, const std::string& input) {
  LRunResult result;
  int master = -1;
  pid_t pid = ::forkpty(&master, nullptr, nullptr, nullptr);
  if (pid < 0) return result;
  if (pid == 0) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(KONTAVO_BIN));
    for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execv(KONTAVO_BIN, argv.data());
    ::_exit(127);
  }
  // The terminal keeps what is typed ahead until the program reads it, line by line.
  if (!input.empty() && ::write(master, input.data(), input.size()) != static_cast<ssize_t>(input.size()))
    ADD_FAILURE() << "typing failed";
  char buffer[4096];
  for (;;) {
    // A program still waiting for an answer after this long was given too few: it is ended.
    pollfd output{master, POLLIN, 0};
    if (::poll(&output, 1, kAnswerTimeoutMs) == 0) {
      ADD_FAILURE() << "kontavo still waits for input";
      ::kill(pid, SIGKILL);
    }
    ssize_t n = ::read(master, buffer, sizeof buffer);
    if (n > 0) result.out.append(buffer, static_cast<std::size_t>(n));
    else if (n < 0 && errno == EINTR) continue;
    else break;  // EIO once the program has ended
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ::close(master);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

class TerminalCliTest : public LHomeTest {};

}  // namespace

TEST_F(TerminalCliTest, WizardAsksEveryPageAndAsksARefusedPageAgain) {
  const std::string typed =
      "fr\n"                    // country
      "\n\n\n\n\n"              // name left empty: refused, the page is asked again
      "Atelier\n12 rue Haute\nMarie\n\n"
      "o\n123456789\n12345678900017\nFR32123456789\nSARL\n5000\nRCS Lyon\n\n\n\nn\n"  // legal mentions
      "\nLivre\n\n"             // currency: the symbol and subunit by default, another name
      "\nn\no\n\nn\n"           // the general chart; a checking account without its balance: refused
      "\no\no\n250.50\nn\n"     // asked again
      "o\n";                    // services by the hour
  LRunResult run = RunOnTerminal({"business", "add"}, typed);
  ASSERT_EQ(run.exitCode, 0) << run.out;
  for (const char* shown :
       {"Pays (code à deux lettres)", "Veuillez entrer le nom de l'entreprise.",
        "Fin de l'exercice (MM-JJ) [12-31] : ", "Veuillez entrer un solde initial pour le compte-chèque.",
        "Utiliser le plan comptable général (PCG) ?"})
    EXPECT_NE(run.out.find(shown), std::string::npos) << shown << "\n" << run.out;
  const std::tuple<const char*, const char*, const char*> written[] = {
      {"Company", "Name", "Atelier"},      {"Company", "Address", "12 rue Haute"},
      {"Company", "ManualCreateAccounts", "1"}, {"Options", "CurrencyName", "Livre"},
      {"Options", "CurrencySubunit", "Centime"}, {"Invoice", "QuantityColumnTitle", "Hres"},
      {"Company", "SIRET", "12345678900017"}, {"Company", "ShareCapital", "500000"}, {"Company", "RCS", "RCS Lyon"}};
  for (const auto& [record, field, value] : written)
    EXPECT_EQ(LStoredField("Misc", record, field, "1"), value) << field;
  EXPECT_EQ(LStoredField("Accounts", "512000", "OpeningBalance", "1"), "25050");
}

TEST_F(TerminalCliTest, WizardLeftAtTheEndOfInputLeavesNoFolder) {
  LRunResult run = RunOnTerminal({"business", "add"}, "FR\nAtelier\n\x04");  // Ctrl-D at the address
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.out.find("Création de l'entreprise abandonnée."), std::string::npos) << run.out;
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/MultiBus/1"));
  // With --name given nothing is asked, even on a terminal.
  LRunResult named = RunOnTerminal({"business", "add", "--name", "Directe"}, "");
  EXPECT_EQ(named.exitCode, 0) << named.out;
  EXPECT_EQ(named.out, "1\r\n");
}

TEST_F(TerminalCliTest, ConfirmationsAreAskedWithTheirButtons) {
  LExpectSuccess({"business", "add", "--name", "Filiale"});
  LRunResult kept = RunOnTerminal({"business", "delete", "1"}, "n\n");
  EXPECT_EQ(kept.exitCode, 1);
  EXPECT_NE(kept.out.find("Confirmer la suppression"), std::string::npos) << kept.out;
  EXPECT_NE(kept.out.find("Oui, supprimer (o) / Annuler (n) : "), std::string::npos) << kept.out;
  EXPECT_TRUE(std::filesystem::exists(home_.SharedFolder() + "/MultiBus/1"));
  EXPECT_EQ(RunOnTerminal({"business", "delete", "1"}, "oui\n").exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/MultiBus/1"));

  // A restore whose folder holds no backup offers to choose another one.
  LTreeWriteSampleBusiness(home_.Path() + "/backup");
  LRunResult restored = RunOnTerminal({"restore", home_.Path() + "/nothing"},
                                      "o\n"                                // restore: yes
                                      "o\n" + home_.Path() + "/backup\n");  // choose another folder
  EXPECT_EQ(restored.exitCode, 0) << restored.out;
  // The copy drew its progress bar, titled, up to the end.
  for (const char* shown : {"Échec de la restauration. Souhaitez-vous choisir un autre dossier ?",
                            "Restaurer les fichiers\r\n\r[", "[##############################] 100 %",
                            "Les données ont été restaurées avec succès."})
    EXPECT_NE(restored.out.find(shown), std::string::npos) << shown << "\n" << restored.out;
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), LTreeSnapshot(home_.Path() + "/backup"));
}
