// The backup and restore page of a real `kontavo serve`: a backup into a folder, then a restore
// from the same backup uploaded as a folder (as a browser sends a folder chosen with
// "webkitdirectory"), each a job whose progress is polled; an upload that is no backup is
// refused with the command line's message and the data left as they were.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "llib/gen/file.h"
#include "tests/app/clitest.h"
#include "tests/support/webservertest.h"

namespace {

class WebBackupTest : public LWebServerTest {
 protected:
  // The page's form as multipart/form-data: fields, then files (upload path, bytes).
  LWebResponse Post(const std::string& session, const std::vector<std::pair<std::string, std::string>>& fields,
                    const std::vector<std::pair<std::string, std::string>>& files = {}) {
    std::string body;
    for (const auto& [name, value] : fields)
      body += "--kb42\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    for (const auto& [path, bytes] : files)
      body += "--kb42\r\nContent-Disposition: form-data; name=\"backupfiles\"; filename=\"" + path +
              "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes + "\r\n";
    body += "--kb42--\r\n";
    return LHttpExchange(port_, "POST /backup HTTP/1.1\r\nHost: 127.0.0.1\r\nCookie: kontavo_sess=" + session +
                                    "\r\nContent-Type: multipart/form-data; boundary=kb42\r\nContent-Length: " +
                                    std::to_string(body.size()) + "\r\n\r\n" + body);
  }

  // Polls the job the answer started until it ends: {"ok": ..., "message": ...} from the script of
  // its outcome.
  nlohmann::json Follow(const std::string& session, const std::string& answer) {
    std::smatch match;
    if (!std::regex_search(answer, match, std::regex("ShowJob\\('([0-9a-f]+)'\\)"))) return {{"noJob", answer}};
    static const std::regex outcome("ShowJobResult\\((true|false), '(.*)'\\);");
    for (int i = 0; i < 1000; ++i) {
      std::string script = LHttpGet(port_, "/jobprogress?id=" + match[1].str(), session).body;
      std::smatch result;
      if (std::regex_search(script, result, outcome)) return {{"ok", result[1] == "true"}, {"message", result[2].str()}};
      if (script.find("ShowJobState(0, '', true)") != std::string::npos) return {{"lost", script}};
      LSleepMs(20);
    }
    return {{"timedOut", true}};
  }

  // Every file of folder as a folder upload named "Sauvegarde".
  static std::vector<std::pair<std::string, std::string>> FolderFiles(const std::string& folder) {
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (!entry.is_regular_file()) continue;
      std::string bytes;
      EXPECT_TRUE(LFile::ReadAll(entry.path().string(), bytes));
      files.emplace_back("Sauvegarde/" + std::filesystem::relative(entry.path(), folder).string(), bytes);
    }
    return files;
  }
};

TEST_F(WebBackupTest, BackupThenRestoreOfTheUploadedBackupBringsTheRecordBack) {
  std::string session = Logon();
  ASSERT_FALSE(session.empty());
  std::string destination = home_.Path() + "/sauvegardes";
  ASSERT_TRUE(LFile::MakeFolder(destination));
  nlohmann::json done = Follow(session, Post(session, {{"101", destination}, {"submit", "Sauvegarder"}}).body);
  ASSERT_TRUE(done.value("ok", false)) << done.dump();
  std::string message = done["message"];
  ASSERT_EQ(message.rfind("Sauvegarde terminée normalement : " + destination + "/Kontavo-Sauvegarder-", 0), 0u)
      << message;
  std::string backup = message.substr(message.find(" : ") + 3);
  EXPECT_NE(LExpectSuccess({"settings", "get", "Setting", "LastBackup"}), "");

  LExpectSuccess({"record", "set", "Misc", "Company", "Name=Nom cassé"});
  // An upload that holds no business is refused; nothing changes, nothing is left behind.
  std::string refused = Post(session, {{"submit", "Restaurer"}}, {{"Divers/notes.txt", "rien"}}).body;
  EXPECT_NE(refused.find("Échec de la restauration. Souhaitez-vous choisir un autre dossier ?"), std::string::npos)
      << refused;
  EXPECT_EQ(LStoredField("Misc", "Company", "Name"), "Nom cassé");
  for (const std::string& name : LFile::ListFolder(home_.Path())) EXPECT_EQ(name.rfind("Restauration-", 0), std::string::npos);

  done = Follow(session, Post(session, {{"submit", "Restaurer"}}, FolderFiles(backup)).body);
  ASSERT_TRUE(done.value("ok", false)) << done.dump();
  EXPECT_EQ(done["message"], "Les données ont été restaurées avec succès.");
  EXPECT_EQ(LStoredField("Misc", "Company", "Name"), "Principale SARL");
  for (const std::string& name : LFile::ListFolder(home_.Path())) EXPECT_EQ(name.rfind("Restauration-", 0), std::string::npos);
  // The server serves again once the restore is over, the administrator still logged on.
  EXPECT_EQ(LHttpGet(port_, "/backup", session).status, 200);
}

TEST_F(WebBackupTest, UsersAreSentAwayAndTheFolderMustBeComplete) {
  LRunResult added = LRunKontavo({"user", "add", "bob@example.fr", "--name", "Bob", "--user", "--profile",
                                  "Principale SARL", "--password-stdin"},
                                 "bobsecret\n");
  ASSERT_EQ(added.exitCode, 0) << added.err;
  std::string bob = Logon("bob@example.fr", "bobsecret");
  EXPECT_EQ(LHttpGet(port_, "/backup", bob).status, 302);
  EXPECT_EQ(Post(bob, {{"101", home_.Path()}, {"submit", "Sauvegarder"}}).body.find("ShowJob"), std::string::npos);

  std::string session = Logon();
  std::string answer = Post(session, {{"101", "sauvegardes"}, {"submit", "Sauvegarder"}}).body;
  EXPECT_NE(answer.find("Veuillez entrer le chemin complet du dossier de destination"), std::string::npos) << answer;
  answer = Post(session, {{"102", home_.Path() + "/Shared"}, {"submit", "Restaurer"}}).body;
  EXPECT_NE(answer.find("Échec de la restauration."), std::string::npos) << answer;  // inside the data it replaces
}

}  // namespace
