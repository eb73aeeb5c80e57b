// Mail sending throughput against the real SMTP server of the tests (aiosmtpd on loopback):
// messages per second with and without STARTTLS (with AUTH LOGIN), and the send time of a
// 10 MB attachment next to the loopback floor measured in the same run (the same amount of
// base64 written through a plain socket to a reader that throws it away).
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include "bench/benchfolder.h"
#include "llib/gen/base64.h"
#include "llib/gen/file.h"
#include "llib/gen/process.h"
#include "llib/net/email.h"
#include "llib/net/socket.h"
#include "tests/support/smtptestserver.h"

namespace {

constexpr std::size_t kAttachmentBytes = 10 * 1024 * 1024;

const LBenchFolder& Folder() {
  static LBenchFolder folder("email");
  return folder;
}

LSmtpTestServer& PlainServer() {
  static LSmtpTestServer server(Folder().Path() + "/plain", {});
  return server;
}

LSmtpTestServer& SecureServer() {
  static LSmtpTestServer server(Folder().Path() + "/secure", [] {
    LSmtpTestServer::Options options;
    options.tls = true;
    options.requireStartTls = true;
    options.auth = "bench:bench";
    return options;
  }());
  return server;
}

const std::string& AttachmentPath() {
  static const std::string path = [] {
    std::string bytes(kAttachmentBytes, '\0');
    std::mt19937 random(7);
    for (char& c : bytes) c = static_cast<char>(random());
    std::string file = Folder().Path() + "/Releve-annuel.pdf";
    if (!LFile::WriteAllAtomic(file, bytes)) std::abort();
    return file;
  }();
  return path;
}

EmailSMTPSendProcess Request(const LSmtpTestServer& server) {
  EmailSMTPSendProcess request;
  request.server = server.Address();
  request.recipients = "client@exemple.fr";
  request.subject = "Facture 1042";
  request.text = "Bonjour,\r\nveuillez trouver votre facture.\r\nCordialement\r\n";
  request.useEncryption = false;
  return request;
}

void Send(benchmark::State& state, EmailSMTPSendProcess& request) {
  LProcessInterfaceRecorder process;
  if (Process(process, request) != kProcessFinished) state.SkipWithError(process.GetError().c_str());
}

void BM_SendPlain(benchmark::State& state) {
  if (!PlainServer().IsRunning()) return state.SkipWithError("aiosmtpd did not start");
  EmailSMTPSendProcess request = Request(PlainServer());
  for (auto _ : state) Send(state, request);
  state.counters["messages/s"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SendPlain)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SendStartTlsAndLogon(benchmark::State& state) {
  if (!SecureServer().IsRunning()) return state.SkipWithError("aiosmtpd did not start");
  EmailSMTPSendProcess request = Request(SecureServer());
  request.useEncryption = true;
  request.caFile = SecureServer().CertFile();
  request.user = "bench";
  request.password = "bench";
  for (auto _ : state) Send(state, request);
  state.counters["messages/s"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SendStartTlsAndLogon)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Send10MBAttachment(benchmark::State& state) {
  if (!PlainServer().IsRunning()) return state.SkipWithError("aiosmtpd did not start");
  EmailSMTPSendProcess request = Request(PlainServer());
  request.attachments = {AttachmentPath()};
  for (auto _ : state) Send(state, request);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAttachmentBytes));
}
BENCHMARK(BM_Send10MBAttachment)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The floor: the attachment's base64 through LSocket to a loopback reader that discards it.
void BM_LoopbackFloor10MB(benchmark::State& state) {
  std::string base64 = LBase64Encode(std::string(kAttachmentBytes, 'x'));
  int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 4) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    ::close(listener);
    return state.SkipWithError("no loopback listener");
  }
  for (auto _ : state) {
    std::thread reader([listener] {
      int fd = ::accept(listener, nullptr, nullptr);
      char buffer[64 * 1024];
      while (::read(fd, buffer, sizeof buffer) > 0) {
      }
      ::close(fd);
    });
    LSocket socket;
    if (socket.Connect(LIPAddressWithPort("127.0.0.1", ntohs(address.sin_port)), 5000) != LNetStatus::kOk ||
        socket.Send(base64, 30000) != LNetStatus::kOk)
      state.SkipWithError("loopback send failed");
    socket.Close();
    reader.join();
  }
  ::close(listener);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAttachmentBytes));
}
BENCHMARK(BM_LoopbackFloor10MB)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);

}  // namespace
