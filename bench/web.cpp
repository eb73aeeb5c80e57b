// The web server under load, measured by wrk on the loopback (keep-alive connections, 2 threads,
// 16 connections, 5 s each): a static file, the logon page and the main page of a logged-on
// session from a real `kontavo serve`, and the same static file from nginx started beside it on
// another port. Figures only: requests per second and mean latency, and the ratio to nginx.
#include <benchmark/benchmark.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include "bench/benchfolder.h"
#include "bench/benchport.h"

namespace {

constexpr char kWrkDuration[] = "5s";

// Runs a shell command and returns its standard output.
std::string Capture(const std::string& command) {
  std::string out;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return out;
  char buffer[4096];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
  ::pclose(pipe);
  return out;
}

pid_t Spawn(const std::vector<std::string>& args, const std::string& logPath) {
  pid_t pid = ::fork();
  if (pid == 0) {
    FILE* log = std::fopen(logPath.c_str(), "w");
    ::dup2(fileno(log), 1);
    ::dup2(fileno(log), 2);
    std::vector<char*> argv;
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
  }
  return pid;
}

bool WaitFor(const std::string& url) {
  for (int i = 0; i < 500; ++i) {
    if (Capture("curl -s -o /dev/null -w '%{http_code}' " + url).find("000") == std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

// A home with an administrator, `kontavo serve` on one port and nginx serving its "Web" folder
// on another.
struct Servers {
  LBenchHome folder{"web"};
  std::string home = folder.Path();
  int kontavoPort = LBenchFreePort();
  int nginxPort = LBenchFreePort();
  pid_t kontavo = -1;
  pid_t nginx = -1;
  std::string session;
  double nginxStaticRate = 0;

  Servers() {
    ::chmod(home.c_str(), 0755);  // nginx workers run as another user
    std::string bin = KONTAVO_BIN;
    Capture(bin + " record set Misc Company 'Name=Banc SARL' >/dev/null 2>&1");
    Capture("echo benchpass | " + bin + " user add bench@example.fr --name Banc --admin --password-stdin 2>/dev/null");
    kontavo = Spawn({bin, "serve", "--port", std::to_string(kontavoPort)}, home + "/serve.log");
    std::string base = "http://127.0.0.1:" + std::to_string(kontavoPort);
    WaitFor(base + "/s.css");
    std::string answer = Capture("curl -s -d '101=bench%40example.fr&102=benchpass&submit=++Connexion++' " + base + "/logon");
    std::smatch match;
    if (std::regex_search(answer, match, std::regex("kontavo_sess=([a-z0-9]+);"))) session = match[1].str();
    Capture("curl -s -b kontavo_sess=" + session + " -d 'rbg3=301&submit=++OK++' " + base + "/chooseprofile");

    std::ofstream conf(home + "/nginx.conf");
    conf << "daemon off; worker_processes 2; pid " << home << "/nginx.pid; error_log " << home
         << "/nginx.err;\nevents { worker_connections 1024; }\nhttp { access_log off; sendfile on; "
         << "client_body_temp_path " << home << "/nb; proxy_temp_path " << home << "/np; fastcgi_temp_path " << home
         << "/nf; uwsgi_temp_path " << home << "/nu; scgi_temp_path " << home << "/ns;\n"
         << "types { text/css css; } server { listen 127.0.0.1:" << nginxPort << "; root " << home << "/Web; } }\n";
    conf.close();
    nginx = Spawn({"nginx", "-c", home + "/nginx.conf", "-p", home}, home + "/nginx.log");
    WaitFor("http://127.0.0.1:" + std::to_string(nginxPort) + "/s.css");
  }
  ~Servers() {
    for (pid_t pid : {kontavo, nginx}) {
      if (pid <= 0) continue;
      ::kill(pid, SIGTERM);
      ::waitpid(pid, nullptr, 0);
    }
  }
};

Servers& Shared() {
  static Servers servers;
  return servers;
}

// Runs wrk against url and reports its figures as counters.
double RunWrk(benchmark::State& state, const std::string& url, const std::string& cookie = {}) {
  std::string command = std::string("wrk -t2 -c16 -d") + kWrkDuration + " --latency ";
  if (!cookie.empty()) command += "-H 'Cookie: kontavo_sess=" + cookie + "' ";
  std::string out = Capture(command + url + " 2>&1");
  std::smatch rate, latency;
  double requests = 0;
  if (std::regex_search(out, rate, std::regex("Requests/sec:\\s+([0-9.]+)"))) requests = std::stod(rate[1].str());
  state.counters["req_per_s"] = requests;
  if (std::regex_search(out, latency, std::regex("Latency\\s+([0-9.]+)(us|ms|s)"))) {
    double value = std::stod(latency[1].str());
    double scale = latency[2] == "us" ? 0.001 : latency[2] == "ms" ? 1.0 : 1000.0;
    state.counters["latency_ms"] = value * scale;
  }
  if (std::regex_search(out, latency, std::regex("Non-2xx or 3xx responses: ([0-9]+)")))
    state.counters["bad_answers"] = std::stod(latency[1].str());
  return requests;
}

std::string KontavoUrl(const std::string& path) {
  return "http://127.0.0.1:" + std::to_string(Shared().kontavoPort) + path;
}

void BM_NginxStaticFile(benchmark::State& state) {
  for (auto _ : state)
    Shared().nginxStaticRate = RunWrk(state, "http://127.0.0.1:" + std::to_string(Shared().nginxPort) + "/s.css");
}

void BM_KontavoStaticFile(benchmark::State& state) {
  for (auto _ : state) {
    double rate = RunWrk(state, KontavoUrl("/s.css"));
    if (Shared().nginxStaticRate > 0) state.counters["share_of_nginx"] = rate / Shared().nginxStaticRate;
  }
}

void BM_KontavoLogonPage(benchmark::State& state) {
  for (auto _ : state) RunWrk(state, KontavoUrl("/logon"));
}

void BM_KontavoMainPageLoggedOn(benchmark::State& state) {
  for (auto _ : state) RunWrk(state, KontavoUrl("/main"), Shared().session);
}

BENCHMARK(BM_NginxStaticFile)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_KontavoStaticFile)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_KontavoLogonPage)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_KontavoMainPageLoggedOn)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
