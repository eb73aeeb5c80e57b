// The business selection in one process: adding switches to the new folder for the wizard and
// back, whatever the wizard's outcome.
#include "app/multiplebusiness.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/startwizard.h"
#include "invoice/shared/profile.h"
#include "tests/support/testhome.h"

using MultipleBusinessTest = LHomeTest;

TEST_F(MultipleBusinessTest, AddRunsTheWizardOnTheNewFolderAndComesBack) {
  LProfile profile;
  const std::string primary = profile.GetDatabaseName();
  LMultipleBusinessDlg dialog(profile);
  dialog.InitList();
  ASSERT_EQ(dialog.GetRows().size(), 1u);
  EXPECT_EQ(dialog.GetSelected(), 0);

  LStartWizardAnswers answers;  // no name yet: refused
  LBusinessEntry added;
  std::string message;
  EXPECT_FALSE(dialog.CmAdd(answers, nullptr, added, message));
  EXPECT_EQ(message, kWizardEmptyNameMessage);
  EXPECT_EQ(profile.GetDatabaseName(), primary);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/MultiBus/1"));
  EXPECT_EQ(dialog.GetRows().size(), 1u);

  answers.name = "Filiale";
  ASSERT_TRUE(dialog.CmAdd(answers, nullptr, added, message)) << message;
  EXPECT_EQ(added.id, "1");
  EXPECT_EQ(added.name, "Filiale");
  EXPECT_EQ(profile.GetDatabaseName(), primary);  // the user opens the new one by choosing it
  ASSERT_EQ(dialog.GetRows().size(), 2u);
  dialog.Select(1);
  dialog.CmOk();
  EXPECT_EQ(profile.GetDatabaseName(), added.folder);

  // Deleting is refused for the primary business and asks before anything else.
  dialog.InitList();
  EXPECT_EQ(dialog.GetSelected(), 1);
  dialog.Select(0);
  std::string error;
  int asked = 0;
  EXPECT_FALSE(dialog.CmDelete([&](const std::string&) { return ++asked, true; }, error));
  EXPECT_EQ(error, kDeletePrimaryMessage);
  EXPECT_EQ(asked, 0);
  dialog.Select(1);
  std::string question;
  EXPECT_FALSE(dialog.CmDelete([&](const std::string& q) { return question = q, false; }, error));
  EXPECT_EQ(question, LMultipleBusinessDeleteQuestion("Filiale"));
  EXPECT_TRUE(std::filesystem::exists(added.folder));
}
