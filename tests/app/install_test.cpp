// The installed program: `cmake --install` into a temporary prefix, the program started from a
// folder of its own, serving the web files installed beside it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "llib/gen/file.h"
#include "tests/support/testhome.h"
#include "tests/support/webclient.h"

namespace {

class InstallTest : public LHomeTest {};

TEST_F(InstallTest, InstalledProgramServesTheWebFilesInstalledBesideIt) {
  std::string prefix = home_.Path() + "/prefix";
  LRunResult install = LRunProgram(KONTAVO_CMAKE, {"--install", KONTAVO_BUILD_DIR, "--prefix", prefix});
  ASSERT_EQ(install.exitCode, 0) << install.err;
  std::string program = prefix + "/bin/kontavo";
  struct stat st;
  ASSERT_EQ(::stat(program.c_str(), &st), 0);
  EXPECT_TRUE(st.st_mode & S_IXUSR);

  // A mark that only the installed copy carries shows where the server took its files from.
  std::string styleSheet = prefix + "/share/kontavo/web/s.css";
  std::string installedStyle = LReadFile(styleSheet);
  ASSERT_FALSE(installedStyle.empty());
  installedStyle += "\n/* copie installée */\n";
  LWriteFile(styleSheet, installedStyle);
  ASSERT_TRUE(LFile::Exists(prefix + "/share/kontavo/web/help/login.html"));

  std::string elsewhere = home_.Path() + "/ailleurs";
  ASSERT_TRUE(LFile::MakeFolder(elsewhere));
  LServeProcess server(LFreeLoopbackPort(), program, elsewhere);
  ASSERT_TRUE(server.WaitReady()) << server.Log();

  LWebResponse style = LHttpGet(server.Port(), "/s.css");
  EXPECT_EQ(style.status, 200);
  EXPECT_EQ(style.body, installedStyle);
  LWebResponse logon = LHttpGet(server.Port(), "/logon");
  EXPECT_EQ(logon.status, 200);
  EXPECT_NE(logon.body.find("Connexion"), std::string::npos);
  EXPECT_EQ(LHttpGet(server.Port(), "/help/login.html").status, 200);
}

}  // namespace
