// File uploads: the multipart body, read from a real socket by a dialog's raw-POST entry, with
// its progress published while it arrives.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "llib/gen/hashtable.h"
#include "llib/web/webdialog.h"
#include "llib/web/webletform.h"
#include "llib/web/webletrequest.h"
#include "llib/web/webletsocket.h"
#include "llib/web/webupload.h"

namespace {

constexpr char kType[] = "multipart/form-data; boundary=----kb42";

std::string Part(const std::string& disposition, const std::string& data, const std::string& type = {}) {
  std::string part = "------kb42\r\nContent-Disposition: form-data; " + disposition + "\r\n";
  if (!type.empty()) part += "Content-Type: " + type + "\r\n";
  return part + "\r\n" + data + "\r\n";
}

// A statement file whose bytes include line ends, NULs and a near-boundary.
std::string FileBytes(std::size_t size) {
  constexpr char kStart[] = "OFX\0\r\n------kb4\r\n";
  std::string bytes(kStart, sizeof kStart - 1);
  while (bytes.size() < size) bytes += static_cast<char>(bytes.size() * 7 % 256);
  return bytes.substr(0, size);
}

std::string Body(const std::string& file) {
  return Part("name=\"101\"", "Compte courant") +
         Part("name=\"statement\"; filename=\"C:\\\\Banque\\\\relevé.ofx\"", file, "application/x-ofx") +
         Part("name=\"empty\"; filename=\"\"", "", "application/octet-stream") +
         Part("name=\"submit\"", "  OK  ") + "------kb42--\r\n";
}

TEST(WebUpload, MultipartSplitsFieldsAndFiles) {
  LHashTable parameters;
  std::vector<LWebletUploadedFile> files;
  std::string file = FileBytes(300);
  ASSERT_TRUE(LWebletParseMultipart(kType, Body(file), parameters, files));
  EXPECT_STREQ(parameters.GetParm("101", ""), "Compte courant");
  EXPECT_STREQ(parameters.GetParm("submit", ""), "  OK  ");
  ASSERT_EQ(files.size(), 1u);  // the field without a chosen file sends nothing
  EXPECT_EQ(files[0].fieldName, "statement");
  EXPECT_EQ(files[0].fileName, "relevé.ofx");
  EXPECT_EQ(files[0].contentType, "application/x-ofx");
  EXPECT_EQ(files[0].data, file);

  EXPECT_FALSE(LWebletParseMultipart("multipart/form-data", Body(file), parameters, files));
  EXPECT_FALSE(LWebletParseMultipart("application/x-www-form-urlencoded; boundary=----kb42", Body(file), parameters,
                                     files));
  std::string cut = Body(file);
  EXPECT_FALSE(LWebletParseMultipart(kType, cut.substr(0, cut.size() - 30), parameters, files));
}

// A dialog whose OK wants the uploaded statement.
class StatementDialog : public LWebDialog {
 public:
  explicit StatementDialog(LWebletForm& form) : LWebDialog(form, "loadstatement") { SetUpload(true); }
  bool CmOk() override {
    const LWebletUploadedFile* file = Upload().Find("statement");
    if (file == nullptr) {
      PopupControlDataInvalid(102, "Veuillez choisir un fichier.");
      return false;
    }
    received = file->data;
    account = GetText(101);
    return true;
  }
  std::string received;
  std::string account;
};

// A connected pair of sockets: the server's end wrapped as the web server wraps it.
struct SocketPair {
  SocketPair() {
    int fds[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
    server = std::make_unique<LWebletSocket>(fds[0], nullptr);
    client = fds[1];
  }
  ~SocketPair() { ::close(client); }
  std::string ReadAnswer() {
    server->ShutdownNow();
    std::string answer;
    char buffer[4096];
    ssize_t got;
    while ((got = ::read(client, buffer, sizeof buffer)) > 0) answer.append(buffer, static_cast<std::size_t>(got));
    return answer;
  }
  std::unique_ptr<LWebletSocket> server;
  int client = -1;
};

void SetUploadHeaders(LWebletForm& form, std::size_t length, const char* uploadId) {
  form.kind = kWebletPost;
  form.headers.SetParm("Content-Type", kType);
  form.headers.SetParm("Content-Length", std::to_string(length).c_str());
  form.parameters.SetString("uploadId", uploadId);
}

TEST(WebUpload, DialogReadsTheBodyPieceByPieceAndPublishesProgress) {
  SocketPair pair;
  std::string file = FileBytes(200000);
  std::string body = Body(file);
  LWebletForm form(pair.server.get());
  SetUploadHeaders(form, body.size(), "up-1");
  LWebletUploadProgress midway;
  std::thread sender([&] {
    // The first 100000 bytes: the reader takes one whole piece, publishes it, and waits.
    ASSERT_EQ(::write(pair.client, body.data(), 100000), 100000);
    LWebletUploadProgress progress;
    for (int i = 0; i < 500 && !(LWebletGetUploadProgress("up-1", progress) && progress.received > 0); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    midway = progress;
    std::size_t sent = 100000;
    while (sent < body.size()) {
      ssize_t wrote = ::write(pair.client, body.data() + sent, body.size() - sent);
      if (wrote <= 0) break;
      sent += static_cast<std::size_t>(wrote);
    }
  });
  StatementDialog dialog(form);
  dialog.RunUpload();
  sender.join();
  EXPECT_EQ(midway.received, kWebletUploadPieceBytes);
  EXPECT_EQ(midway.total, body.size());
  EXPECT_FALSE(midway.finished);
  LWebletUploadProgress done;
  ASSERT_TRUE(LWebletGetUploadProgress("up-1", done));
  EXPECT_EQ(done.received, body.size());
  EXPECT_TRUE(done.finished);
  EXPECT_EQ(dialog.received, file);
  EXPECT_EQ(dialog.account, "Compte courant");
  std::string answer = pair.ReadAnswer();
  EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4), "window.location = 'main';\n");
}

TEST(WebUpload, RefusalsAnswerWithAMessageBox) {
  {
    SocketPair pair;
    LWebletForm form(pair.server.get());
    SetUploadHeaders(form, kWebletMaxUploadBytes + 1, "up-2");
    StatementDialog(form).RunUpload();
    std::string answer = pair.ReadAnswer();
    EXPECT_NE(answer.find("alert('Le fichier est trop volumineux : 3000000 octets au plus.');"), std::string::npos);
    LWebletUploadProgress progress;
    EXPECT_FALSE(LWebletGetUploadProgress("up-2", progress));  // nothing was read
  }
  {
    // The client goes away half-way.
    SocketPair pair;
    LWebletForm form(pair.server.get());
    std::string body = Body(FileBytes(1000));
    SetUploadHeaders(form, body.size(), "up-3");
    ASSERT_EQ(::write(pair.client, body.data(), 500), 500);
    ::shutdown(pair.client, SHUT_WR);
    StatementDialog dialog(form);
    dialog.RunUpload();
    EXPECT_TRUE(dialog.received.empty());
    EXPECT_NE(pair.ReadAnswer().find("alert('Le fichier n\\'a pas pu être reçu.');"), std::string::npos);
    LWebletUploadProgress progress;
    ASSERT_TRUE(LWebletGetUploadProgress("up-3", progress));
    EXPECT_TRUE(progress.finished);
    EXPECT_LT(progress.received, body.size());
  }
}

TEST(WebUpload, ProgressTableKeepsTheLatestUploadsOfValidIds) {
  LWebletSetUploadProgress("bad id/..", {1, 2, false});
  LWebletUploadProgress progress;
  EXPECT_FALSE(LWebletGetUploadProgress("bad id/..", progress));
  LWebletSetUploadProgress("running", {5, 10, false});
  for (int i = 0; i < 100; ++i) LWebletSetUploadProgress("old" + std::to_string(i), {1, 1, true});
  // Finished uploads make room first: the one still running stays.
  ASSERT_TRUE(LWebletGetUploadProgress("running", progress));
  EXPECT_EQ(progress.received, 5u);
  EXPECT_FALSE(LWebletGetUploadProgress("old0", progress));
  EXPECT_TRUE(LWebletGetUploadProgress("old99", progress));

  LWebletForm form(nullptr);  // no session: nothing is told
  form.parameters.SetString("uploadId", "running");
  WLUploadProgress(form);
  EXPECT_EQ(form.Captured(),
            "HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/plain\r\n\r\n"
            "ShowUploadProgress(0, 0, 0);\n");
}

}  // namespace
