// Jobs of the web pages: their state as the polls read it, the exclusive job's hold on the
// server's routes, and the paths of a folder upload (outside input) checked before any write.
#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "llib/gen/file.h"
#include "llib/web/webjob.h"
#include "llib/web/webupload.h"
#include "tests/support/testhome.h"

namespace {

TEST(WebJob, PollsReadProgressThenTheOutcome) {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::string id = LWebJobStart([released](LProcessInterface& process, std::string& message) {
    process.SetStatus("Copie", 0);
    process.SetProgress(0.25);
    released.wait();
    message = "Fait.";
    return kProcessFinished;
  });
  ASSERT_EQ(id.size(), 32u);
  LWebJobState state;
  for (int i = 0; i < 500 && (!LWebJobGet(id, state) || state.progress < 0.25); ++i) LSleepMs(2);
  EXPECT_EQ(state.status, "Copie");
  EXPECT_FALSE(state.finished);
  EXPECT_FALSE(LWebJobRefusesRoute("main"));  // not exclusive
  release.set_value();
  ASSERT_TRUE(LWebJobWaitAll(5000));
  ASSERT_TRUE(LWebJobGet(id, state));
  EXPECT_TRUE(state.finished);
  EXPECT_EQ(state.result, kProcessFinished);
  EXPECT_EQ(state.progress, 1);
  EXPECT_EQ(state.message, "Fait.");
  EXPECT_FALSE(LWebJobGet("0123456789abcdef0123456789abcdef", state));

  // A failure without a message of its own shows the error it set.
  id = LWebJobStart([](LProcessInterface& process, std::string&) {
    process.SetError("Disque plein.");
    return kProcessFailed;
  });
  ASSERT_TRUE(LWebJobWaitAll(5000));
  ASSERT_TRUE(LWebJobGet(id, state));
  EXPECT_EQ(state.result, kProcessFailed);
  EXPECT_EQ(state.message, "Disque plein.");
}

TEST(WebJob, AnExclusiveJobLeavesOnlyItsRoutesAndIsAlone) {
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  auto held = [released](LProcessInterface&, std::string&) {
    released.wait();
    return kProcessFinished;
  };
  std::string id = LWebJobStart(held, {"jobprogress"});
  ASSERT_FALSE(id.empty());
  EXPECT_TRUE(LWebJobRefusesRoute("main"));
  EXPECT_TRUE(LWebJobRefusesRoute("backup"));
  EXPECT_FALSE(LWebJobRefusesRoute("jobprogress"));
  EXPECT_EQ(LWebJobStart(held, {"jobprogress"}), "");  // a second restore waits its turn
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
