// The background sender: queued mail goes out with the stored settings, failures are retried
// with growing pauses and dropped after their last retry, and the thread stops on request even
// in the middle of a send.
#include "llib/net/emailsendbg.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <thread>

#include "llib/net/emailsettings.h"
#include "tests/support/scriptedserver.h"
#include "tests/support/smtptestserver.h"
#include "tests/support/testhome.h"

namespace {

using Clock = std::chrono::steady_clock;

// Polls condition until it holds or timeoutMs passed; whether it held.
bool WaitUntil(const std::function<bool()>& condition, int timeoutMs = 10000) {
  Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!condition()) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

class EmailSendBackground : public LHomeTest {
 protected:
  void SetUp() override {
    LEmailSendBackgroundTimings timings;
    timings.retryStepMs = kStepMs;
    timings.idleWithRetriesMs = 5;
    LSendEmailBackgroundSetTimings(timings);
  }
  void TearDown() override { LSendEmailBackgroundStopNow(); }

  void UseServer(const std::string& address) {
    LEmailSettings settings;
    settings.server = address;
    settings.useEncryption = false;
    settings.replyTo = "factures@mon-entreprise.fr";
    ASSERT_TRUE(LEmailSettingsSave(settings));
  }
  std::string Attachment() {
    std::string path = home_.Path() + "/Facture-1042.pdf";
    LWriteFile(path, "%PDF-1.4 facture");
    return path;
  }

  static constexpr unsigned kStepMs = 10;
};

TEST_F(EmailSendBackground, QueuedMailGoesOutWithTheStoredSettingsAndItsFilesAreRemoved) {
  LSmtpTestServer server(home_.Path() + "/smtp", {});
  ASSERT_TRUE(server.IsRunning());
  UseServer(server.Address());
  std::string file = Attachment();
  LSendEmailBackground("client@exemple.fr", "", "Mot de passe", "Votre mot de passe : 1234", {file}, true);
  ASSERT_TRUE(WaitUntil([&] { return LSendEmailBackgroundGetState().sent == 1; }));
  ASSERT_EQ(server.MessageCount(), 1);
  nlohmann::json message = server.Message(1);
  EXPECT_EQ(message["rcptTos"], nlohmann::json({"client@exemple.fr"}));
  EXPECT_EQ(message["subject"], "Mot de passe");
  EXPECT_NE(server.Content(1).find("Reply-To: factures@mon-entreprise.fr\r\n"), std::string::npos);
  EXPECT_EQ(server.Part(1, 1), "%PDF-1.4 facture");
  EXPECT_TRUE(WaitUntil([&] { return !std::filesystem::exists(file); }));
  EXPECT_EQ(LSendEmailBackgroundGetState().attempts, 1u);
}

TEST_F(EmailSendBackground, FailuresAreRetriedAfterGrowingPausesThenDropped) {
  std::string address = "127.0.0.1:" + std::to_string(LRefusingPort());
  UseServer(address);
  std::string file = Attachment();
  Clock::time_point start = Clock::now();
  LSendEmailBackground("client@exemple.fr", "", "Relance", "texte", {file}, true);
  ASSERT_TRUE(WaitUntil([] { return LSendEmailBackgroundGetState().dropped == 1; }, 20000));
  auto elapsedMs = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
  LEmailSendBackgroundState state = LSendEmailBackgroundGetState();
  // The first attempt and 15 retries, the n-th retry n steps after the attempt before it.
  EXPECT_EQ(state.attempts, 16u);
  EXPECT_EQ(state.sent, 0u);
  EXPECT_EQ(state.retrying, 0u);
  EXPECT_GE(elapsedMs, static_cast<long long>(kStepMs) * (15 * 16 / 2));
  EXPECT_EQ(state.lastError, "Impossible de se connecter au serveur de messagerie \"" + address +
                                 "\" pour envoyer un message à \"client@exemple.fr\".");
  // Given up: the file made for the mail goes too.
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(EmailSendBackground, AMessageRefusedOnceIsSentOnItsFirstRetry) {
  LSmtpTestServer::Options options;
  options.replies = {"DATA=451"};
  LSmtpTestServer server(home_.Path() + "/smtp", options);
  ASSERT_TRUE(server.IsRunning());
  UseServer(server.Address());
  std::string file = Attachment();
  // Whoever queued the message hears of each attempt: the refusal with the server's words, then
  // the sending.
  std::mutex mutex;
  std::vector<std::string> heard;
  LSendEmailBackground("client@exemple.fr", "", "Relance", "texte", {file}, false,
                       [&](LProcessResult result, const std::string& error, bool willRetry) {
                         std::lock_guard<std::mutex> lock(mutex);
                         heard.push_back(result == kProcessFinished ? "sent" : (willRetry ? "retry: " : "dropped: ") + error);
                       });
  ASSERT_TRUE(WaitUntil([&] {
    std::lock_guard<std::mutex> lock(mutex);
    return heard.size() == 2;
  }));
  {
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_TRUE(heard[0].starts_with("retry: ") && heard[0].find("451") != std::string::npos) << heard[0];
    EXPECT_EQ(heard[1], "sent");
  }
  LEmailSendBackgroundState state = LSendEmailBackgroundGetState();
  EXPECT_EQ(state.attempts, 2u);
  EXPECT_EQ(state.dropped, 0u);
  EXPECT_EQ(server.MessageCount(), 1);
  // Kept: the caller did not ask for its removal.
  EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(EmailSendBackground, StopNowEndsASendThatWaitsOnASilentServer) {
  LScriptedTcpServer server([](LScriptedTcpConnection& c) { c.WaitForClose(30000); });
  UseServer(server.Address());
  LSendEmailBackground("client@exemple.fr", "", "Sujet", "texte", {}, false);
  ASSERT_TRUE(WaitUntil([&] { return server.Connections() == 1; }));
  Clock::time_point start = Clock::now();
  LSendEmailBackgroundStopSoon();
  LSendEmailBackgroundStopNow();
  auto elapsedMs = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
  EXPECT_LT(elapsedMs, 3000);
  // A stopped send is neither sent nor kept for a retry.
  LEmailSendBackgroundState state = LSendEmailBackgroundGetState();
  EXPECT_EQ(state.sent, 0u);
  EXPECT_EQ(state.retrying, 0u);
}

}  // namespace
