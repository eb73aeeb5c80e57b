// `kontavo desk` from a stopped service until its one-time link answers: the desk command starts
// the service, waits for its web server, writes the token and prints the link, and the link is
// then fetched over the loopback. The service is stopped again between iterations, outside the
// timing. Target: under 300 ms.
#include <benchmark/benchmark.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "bench/benchfolder.h"
#include "bench/benchport.h"
#include "llib/gen/serviceengine.h"

namespace {

std::string Capture(const std::string& command) {
  std::string out;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return out;
  char buffer[512];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
  ::pclose(pipe);
  return out;
}

// The status line of a GET of path on the loopback port.
std::string FetchStatusLine(int port, const std::string& path) {
  int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  std::string answer;
  if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
    std::string request = "GET " + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n";
    if (::send(fd, request.data(), request.size(), 0) == static_cast<ssize_t>(request.size())) {
      char buffer[512];
      ssize_t n;
      while (answer.find("\r\n") == std::string::npos && (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0)
        answer.append(buffer, static_cast<std::size_t>(n));
    }
  }
  ::close(fd);
  return answer.substr(0, answer.find("\r\n"));
}

void StopService() {
  if (!LServiceEngineSendControl(kServiceControlStop)) return;
  while (LServiceEngineIsRunning()) ::usleep(2000);
}

void BM_DeskUntilLinkAnswers(benchmark::State& state) {
  LBenchHome home("desk");
  int port = LBenchFreePort();
  std::string bin = KONTAVO_BIN;
  Capture(bin + " web port " + std::to_string(port));
  std::string prefix = "http://127.0.0.1:" + std::to_string(port);
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    std::string link = Capture(bin + " desk --no-open");
    std::string status = link.rfind(prefix, 0) == 0 ? FetchStatusLine(port, link.substr(prefix.size(), link.size() -
                                                                                                          prefix.size() - 1))
                                                    : std::string();
    auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (status != "HTTP/1.1 200 OK") {
      state.SkipWithError(("the link did not answer: " + link + " " + status).c_str());
      break;
    }
    state.SetIterationTime(elapsed);
    StopService();
  }
  StopService();
}
BENCHMARK(BM_DeskUntilLinkAnswers)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
