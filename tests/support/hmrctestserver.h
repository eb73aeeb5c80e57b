// Test support: the HMRC stand-in of the VAT tests (tests/invoice/shared/hmrcserver.py under
// /usr/bin/python3) as a child process on 127.0.0.1 and a free port, over HTTPS with a
// self-signed certificate made on the spot. The requests it received are read back from its
// journal.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/smtptestserver.h"

class LHmrcTestServer : public ltest::ServerProcess {
 public:
  // Starts the server with the extra options of hmrcserver.py ("--expired", ...); its journal
  // and certificate go to folder (created).
  LHmrcTestServer(const std::string& folder, const std::vector<std::string>& options = {}) : folder_(folder) {
    std::filesystem::create_directories(folder_);
    certFile_ = folder_ + "/cert.pem";
    if (!LMakeSelfSignedCertificate(certFile_, folder_ + "/key.pem")) return;
    std::vector<std::string> argv = {"/usr/bin/python3",
                                     std::string(KONTAVO_TEST_SOURCE_DIR) + "/invoice/shared/hmrcserver.py",
                                     "--cert", certFile_, "--key", folder_ + "/key.pem", "--outdir", folder_};
    argv.insert(argv.end(), options.begin(), options.end());
    Start(argv, folder_ + "/server.err");
  }

  std::string BaseUrl() const { return "https://127.0.0.1:" + std::to_string(Port()); }
  const std::string& CertFile() const { return certFile_; }

  // The requests received, in order: {"method", "path", "query", "headers", "body"}.
  std::vector<nlohmann::json> Requests() const {
    std::vector<nlohmann::json> requests;
    std::istringstream lines(ltest::ReadWholeFile(folder_ + "/requests.jsonl"));
    for (std::string line; std::getline(lines, line);)
      if (!line.empty()) requests.push_back(nlohmann::json::parse(line));
    return requests;
  }

 private:
  std::string folder_;
  std::string certFile_;
};
