// The server side of TLS: the certificate and private key a server presents (LTlsServerContext,
// shared by every connection of one listener), and the self-signed certificate the web server
// makes for itself when the user gives none.
//
// A self-signed certificate proves nothing to a browser, which warns once; it still keeps
// passwords and books private on the network, and a colleague who accepts it once is warned again
// if another machine takes the server's place. The key is written with mode 0600 before anything
// else can open it.
#pragma once

#include <memory>
#include <string>
#include <vector>

struct ssl_ctx_st;

class LTlsServerContext {
 public:
  // Reads certFile (PEM: the certificate, then any intermediate ones) and keyFile (PEM private
  // key) and checks that they belong together. null with error (OpenSSL's reason) otherwise.
  static std::shared_ptr<LTlsServerContext> Load(const std::string& certFile, const std::string& keyFile,
                                                 std::string& error);
  ~LTlsServerContext();
  LTlsServerContext(const LTlsServerContext&) = delete;
  LTlsServerContext& operator=(const LTlsServerContext&) = delete;

  // OpenSSL's context (TLS 1.2 at least), owned by this object.
  ssl_ctx_st* Native() const { return context_; }

 private:
  explicit LTlsServerContext(ssl_ctx_st* context) : context_(context) {}
  ssl_ctx_st* context_;  // owned
};

// Writes a new self-signed certificate (EC P-256 key, SHA-256, valid validDays from an hour ago)
// for names: host names become DNS entries and literal IPv4 or IPv6 addresses IP entries of its
// subject alternative names; the first name is also the common name. The key goes to keyFile with
// mode 0600, the certificate to certFile (0644), each through a temporary file and a rename.
// false with error when anything failed (then neither file was replaced).
[[nodiscard]] bool LTlsMakeSelfSignedCertificate(const std::string& certFile, const std::string& keyFile,
                                                 const std::vector<std::string>& names, int validDays,
                                                 std::string& error);
