// Jobs of the web pages: their state as the polls read it, the exclusive job's hold on the
// server's routes, and the paths of a folder upload (outside input) checked before any write.
#include <gtest/gtest.h>

#include <future>

#include "llib/gen/file.h"
#include "llib/gen/process.h"
#include "llib/web/webjob.h"
#include "llib/web/webupload.h"
#include "tests/support/testhome.h"

namespace {

TEST(WebJob, PollsReadProgressThenTheAnswerOnceAndOnlyForTheOwner) {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::string id = LWebJobStart("alice|", [released](LProcessInterface& process, LWebJobAnswer& answer) {
    process.SetStatus("Copie", 0);
    process.SetProgress(0.25);
    released.wait();
    answer.script = "Fait();";
  });
  LWebJobState state;
  for (int i = 0; i < 500 && (!LWebJobPoll(id, "alice|", state) || state.progress < 0.25); ++i) LSleepMs(2);
  EXPECT_EQ(state.status, "Copie");
  EXPECT_FALSE(state.finished);
  EXPECT_FALSE(LWebJobPoll(id, "bob|", state));  // another user's job
  EXPECT_FALSE(LWebJobRefusesRoute("main"));     // not exclusive
  release.set_value();
  ASSERT_TRUE(LWebJobWaitAll(5000));
  ASSERT_TRUE(LWebJobPoll(id, "alice|", state));
  EXPECT_TRUE(state.finished);
  EXPECT_EQ(state.progress, 1);
  EXPECT_EQ(state.answer.script, "Fait();");
  EXPECT_FALSE(LWebJobPoll(id, "alice|", state));  // forgotten once read
}

TEST(WebJob, AnExclusiveJobLeavesOnlyItsRoutesAndIsAlone) {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  auto held = [released](LProcessInterface&, LWebJobAnswer&) { released.wait(); };
  std::string id = LWebJobStartExclusive("|1", held, {"jobprogress"});
  ASSERT_FALSE(id.empty());
  EXPECT_TRUE(LWebJobRefusesRoute("main"));
  EXPECT_TRUE(LWebJobRefusesRoute("backup"));
  EXPECT_FALSE(LWebJobRefusesRoute("jobprogress"));
  EXPECT_EQ(LWebJobStartExclusive("|1", held, {"jobprogress"}), "");  // a second restore waits its turn
  release.set_value();
  ASSERT_TRUE(LWebJobWaitAll(5000));
  EXPECT_FALSE(LWebJobRefusesRoute("main"));
}

TEST(WebUpload, FolderUploadPathsStayInsideTheTarget) {
  std::string relative;
  EXPECT_TRUE(LWebletUploadedRelativePath("Sauvegarde/Misc/Options.dat", relative));
  EXPECT_EQ(relative, "Misc/Options.dat");
  for (const char* bad : {"Options.dat", "/Sauvegarde/Misc", "Sauvegarde/../x", "Sauvegarde/Misc/..",
                          "Sauvegarde//x", "Sauvegarde/./x", "Sauvegarde/", ""})
    EXPECT_FALSE(LWebletUploadedRelativePath(bad, relative)) << bad;
  EXPECT_FALSE(LWebletUploadedRelativePath(std::string("S/a\0b", 5), relative));

  LTempHome home;
  std::string target = home.Path() + "/cible";
  ASSERT_TRUE(LFile::MakeFolder(target));
  LWebletUpload upload;
  upload.files.push_back({"f", "Options.dat", "S/Misc/Options.dat", "", "options"});
  upload.files.push_back({"f", "2024-01-02.dat", "S/Ledger/2024/2024-01-02.dat", "", "jour"});
  upload.files.push_back({"autre", "x", "S/x", "", "ignoré"});
  EXPECT_EQ(LWebletWriteUploadedFolder(upload, "f", target), 2);
  std::string content;
  ASSERT_TRUE(LFile::ReadAll(target + "/Ledger/2024/2024-01-02.dat", content));
  EXPECT_EQ(content, "jour");
  EXPECT_FALSE(LFile::Exists(target + "/x"));

  // One bad path refuses the whole upload before anything is written.
  std::string second = home.Path() + "/second";
  ASSERT_TRUE(LFile::MakeFolder(second));
  upload.files.push_back({"f", "evil", "S/../../evil", "", "mal"});
  EXPECT_EQ(LWebletWriteUploadedFolder(upload, "f", second), -1);
  EXPECT_TRUE(LFile::ListFolder(second).empty());
}

}  // namespace
