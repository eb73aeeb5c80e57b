// HTTPS of the web server, for colleagues who reach it over the network. Settings of the group
// "WebServer": "Secure" ("1": the server speaks TLS; off by default), "CertificateFile" and
// "KeyFile" (PEM files the user gives; empty: the server's own self-signed pair).
//
// The server's own pair lives in the folder "tls" of the application folder (mode 0700):
// "tls/cert.pem" and "tls/key.pem" (mode 0600). It is made on the first start with HTTPS when
// missing, for the names "localhost", 127.0.0.1, the machine's host name and its address on the
// local network, valid ten years; delete both files to have a new one made.
#pragma once

#include <memory>
#include <string>

class LTlsServerContext;

// Validity of the self-signed certificate the server makes for itself.
inline constexpr int kWebletSelfSignedDays = 3650;

// "Secure" is on.
bool LWebletIsSecure();
// The certificate and key in use: the settings, or the server's own pair.
std::string LWebletCertificateFile();
std::string LWebletKeyFile();
// true when the certificate is the server's own self-signed one.
bool LWebletUsesOwnCertificate();
// Stores "Secure" and, when on, the certificate and key (both empty: the server's own pair).
// false when a setting could not be written.
[[nodiscard]] bool LWebletSetSecure(bool on, const std::string& certFile, const std::string& keyFile);

// The TLS context of the configured certificate, making the server's own pair first when it is
// used and missing. null with error (French, for the log and the command line) when it cannot be
// made or read.
std::shared_ptr<const LTlsServerContext> LWebletLoadTls(std::string& error);
