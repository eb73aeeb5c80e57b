// The sales pages of a real `kontavo serve` over a business of 10,000 invoices (spread over this
// fiscal year) and 1,000 customers, each request on a new loopback connection, timed from the
// request sent to the answer read: the invoice list of this month (page 1 of about 830 rows) and
// of the whole fiscal year (page 1 of 10,000), opening an invoice's dialog, and saving an edit
// of an invoice through its route (re-totalled and re-posted). Figures only; the business is
// made and shown once before the measures. Beside the time, each measure gives the server's CPU
// time per request.
#include <benchmark/benchmark.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <memory>
#include <regex>
#include <string>
#include <thread>

#include "accounts/accounts.h"
#include "app/appinstall.h"
#include "bench/benchfolder.h"
#include "bench/benchport.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

namespace {

constexpr int kInvoices = 10000;
constexpr int kCustomers = 1000;

// One request on a new connection; the whole answer (the server closes after it).
std::string Exchange(int port, const std::string& request) {
  int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string answer;
  if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
      ::send(fd, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size())) {
    char buffer[65536];
    for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) answer.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(fd);
  return answer;
}

std::string Get(int port, const std::string& path, const std::string& session) {
  return Exchange(port, "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nCookie: kontavo_sess=" +
                            session + "\r\n\r\n");
}

std::string Post(int port, const std::string& path, const std::string& body, const std::string& session) {
  return Exchange(port, "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nCookie: kontavo_sess=" + session +
                            "\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                            std::to_string(body.size()) + "\r\n\r\n" + body);
}

// The business, its server and a logged-on session, made once for all the measures.
struct Server {
  LBenchHome home{"salesweb"};
  int port = LBenchFreePort();
  pid_t pid = -1;
  std::string session;

  Server() {
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    ::setenv("LC_ALL", "fr_FR.UTF-8", 1);  // amounts typed "125,50"
    std::string bin = KONTAVO_BIN;
    std::system((bin + " init --name 'Banc SARL' >/dev/null 2>&1").c_str());
    std::system(("echo benchpass | " + bin + " user add bench@example.fr --name Banc --admin --password-stdin "
                 ">/dev/null 2>&1").c_str());
    LAppInstall();
    {
      LProfile profile(home.Business());
      for (int c = 0; c < kCustomers; ++c) {
        LCustomer customer;
        profile.MainList(kCustomersList).OpenAlways(customer, "C" + std::to_string(c));
        customer.SetString("Name", "Client " + std::to_string(c));
      }
      LDate first;
      LDate::Parse(LFiscalYearOf(profile, LDate::Today()).from, first);
      const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
      for (int n = 0; n < kInvoices; ++n) {
        LRecord content;
        content.SetString("Customer", "C" + std::to_string(n % kCustomers));
        content.SetString("Date", first.AddDays(n % 365).ToText());
        for (int i = 0; i < 3; ++i) {
          std::string prefix = "Item" + std::to_string(i + 1);
          content.SetString(prefix + "Description", "Article");
          content.SetString(prefix + "Qty", "2.000000");
          content.SetInt64(prefix + "UnitValue", 1999 + 137 * i + n % 100);
          content.SetString(prefix + "TaxRate", "20/0/0");
        }
        content.SetInt("ItemCount", 3);
        std::string key;
        if (!LSalesDocumentCreate(profile, kind, content, false, {}, key, nullptr)) break;
      }
    }
    pid = ::fork();
    if (pid == 0) {
      std::freopen((home.Path() + "/serve.log").c_str(), "w", stdout);
      std::freopen((home.Path() + "/serve.log").c_str(), "a", stderr);
      ::execl(bin.c_str(), bin.c_str(), "serve", "--port", std::to_string(port).c_str(), nullptr);
      ::_exit(127);
    }
    for (int wait = 0; wait < 100 && Exchange(port, "GET /s.css HTTP/1.0\r\n\r\n").empty(); ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::string answer = Post(port, "/logon", "101=bench%40example.fr&102=benchpass&submit=++Connexion++", "");
    std::smatch match;
    if (std::regex_search(answer, match, std::regex("kontavo_sess=([a-z0-9]+);"))) session = match[1].str();
    Post(port, "/chooseprofile", "rbg3=301&submit=++OK++", session);
    Get(port, "/invoicelist?prd=all", session);  // the file cache warmed as every day
  }
  ~Server() {
    if (pid > 0) {
      ::kill(pid, SIGTERM);
      ::waitpid(pid, nullptr, 0);
    }
  }
};

Server& TheServer() {
  static Server server;
  return server;
}

// The CPU time the server process has used (user and system, all its threads), in ms: on a
// loaded machine a steadier figure than the time an answer takes to come back.
double ServerCpuMs(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::istringstream fields(text.substr(text.rfind(')') + 2));  // from the state, field 3
  std::string field;
  double ticks = 0;
  for (int n = 3; n <= 15 && fields >> field; ++n)
    if (n >= 14) ticks += std::stod(field);  // utime, stime
  return ticks * 1000.0 / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// Times one request per iteration; the answer must hold expected. Also counts the server's CPU
// time per request ("server_cpu_ms").
template <class Request>
void Measure(benchmark::State& state, const std::string& expected, Request request) {
  Server& server = TheServer();
  double cpuBefore = ServerCpuMs(server.pid);
  for (auto _ : state) {
    std::string answer = request(server);
    if (answer.find(expected) == std::string::npos) {
      state.SkipWithError(("unexpected answer: " + answer.substr(0, 300)).c_str());
      return;
    }
  }
  state.counters["server_cpu_ms"] =
      benchmark::Counter((ServerCpuMs(server.pid) - cpuBefore) / static_cast<double>(state.iterations()));
}

void BM_InvoiceListThisMonth(benchmark::State& state) {
  Measure(state, "document(s)", [](Server& s) { return Get(s.port, "/invoicelist?prd=m", s.session); });
}
BENCHMARK(BM_InvoiceListThisMonth)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_InvoiceListThisFiscalYear(benchmark::State& state) {
  Measure(state, "10000 document(s)", [](Server& s) { return Get(s.port, "/invoicelist", s.session); });
}
BENCHMARK(BM_InvoiceListThisFiscalYear)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_InvoiceDialogOpen(benchmark::State& state) {
  Measure(state, "fktotals", [](Server& s) { return Get(s.port, "/invoiceprop?id=5000", s.session); });
}
BENCHMARK(BM_InvoiceDialogOpen)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_InvoiceSaveThroughRoute(benchmark::State& state) {
  int n = 0;
  Measure(state, "window.location = 'invoicelist';", [&n](Server& s) {
    std::string key = std::to_string(100 + n++ % 50);
    return Post(s.port, "/invoiceprop",
                "id=" + key + "&101=C7&102=" + LDate::Today().ToText() +
                    "&103=30&fklines=2&10001=Conseil&10002=2&10003=125%2C50&10011=Livraison&10012=1&10013=9%2C90"
                    "&submit=Enregistrer",
                s.session);
  });
}
BENCHMARK(BM_InvoiceSaveThroughRoute)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
