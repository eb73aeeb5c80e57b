#include "llib/net/tls.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "llib/net/tlsserver.h"

namespace {

// Bytes moved between the socket and OpenSSL's buffers per transfer: one full TLS record.
constexpr std::size_t kTransferBytes = 16 * 1024 + 512;


}  // namespace

bool LTlsIsAddressLiteral(const std::string& host) {
  unsigned char address[16];
  return ::inet_pton(AF_INET, host.c_str(), address) == 1 || ::inet_pton(AF_INET6, host.c_str(), address) == 1;
}

std::string LTlsTakeErrors() {
  std::string text;
  while (unsigned long code = ::ERR_get_error()) {
    char line[256];
    ::ERR_error_string_n(code, line, sizeof line);
    if (!text.empty()) text += "; ";
    text += line;
  }
  return text;
}

struct LTlsChannel::Impl {
  SSL_CTX* context = nullptr;
  SSL* ssl = nullptr;
  BIO* fromPeer = nullptr;  // received records waiting for OpenSSL (owned by ssl)
  BIO* toPeer = nullptr;    // records OpenSSL produced, waiting for the socket (owned by ssl)

  ~Impl() {
    if (ssl != nullptr) ::SSL_free(ssl);
    if (context != nullptr) ::SSL_CTX_free(context);
  }

  bool Setup(const LTlsClientOptions& options, std::string& error);
  // The SSL object and its two memory buffers over context (already set); false with error.
  bool MakeSsl(std::string& error);
  LNetStatus Flush(LTlsTransport& transport, const LNetDeadline& deadline);
  LNetStatus Fill(LTlsTransport& transport, const LNetDeadline& deadline);
  // Repeats call (one OpenSSL operation) until it succeeds, moving records as OpenSSL asks.
  template <class Call>
  LNetStatus Drive(LTlsTransport& transport, const LNetDeadline& deadline, Call call, int& result,
                   std::string& error);
};

bool LTlsChannel::Impl::Setup(const LTlsClientOptions& options, std::string& error) {
  context = ::SSL_CTX_new(::TLS_client_method());
  if (context == nullptr) return error = LTlsTakeErrors(), false;
  ::SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
  if (options.verifyPeer) {
    ::SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    ::SSL_CTX_set_default_verify_paths(context);
    if (!options.caFile.empty() && ::SSL_CTX_load_verify_locations(context, options.caFile.c_str(), nullptr) != 1) {
      error = "cannot load the trusted certificates of " + options.caFile + ": " + LTlsTakeErrors();
      return false;
    }
  } else {
    ::SSL_CTX_set_verify(context, SSL_VERIFY_NONE, nullptr);
  }
  if (!MakeSsl(error)) return false;
  const std::string& host = options.hostName;
  if (!host.empty()) {
    if (LTlsIsAddressLiteral(host)) {
      // Server Name Indication carries names only; an address is checked against the
      // certificate's IP entries.
      if (options.verifyPeer) ::X509_VERIFY_PARAM_set1_ip_asc(::SSL_get0_param(ssl), host.c_str());
    } else {
      ::SSL_set_tlsext_host_name(ssl, host.c_str());
      if (options.verifyPeer) ::SSL_set1_host(ssl, host.c_str());
    }
  }
  ::SSL_set_connect_state(ssl);
  return true;
}

bool LTlsChannel::Impl::MakeSsl(std::string& error) {
  ssl = ::SSL_new(context);
  fromPeer = ::BIO_new(::BIO_s_mem());
  toPeer = ::BIO_new(::BIO_s_mem());
  if (ssl == nullptr || fromPeer == nullptr || toPeer == nullptr) {
    ::BIO_free(fromPeer);
    ::BIO_free(toPeer);
    fromPeer = toPeer = nullptr;
    return error = LTlsTakeErrors(), false;
  }
  // An empty buffer means "wait for more", never end of stream: the socket reports the end.
  BIO_set_mem_eof_return(fromPeer, -1);
  BIO_set_mem_eof_return(toPeer, -1);
  ::SSL_set_bio(ssl, fromPeer, toPeer);
  return true;
}

LNetStatus LTlsChannel::Impl::Flush(LTlsTransport& transport, const LNetDeadline& deadline) {
  char buffer[kTransferBytes];
  while (BIO_ctrl_pending(toPeer) > 0) {
    int count = ::BIO_read(toPeer, buffer, sizeof buffer);
    if (count <= 0) break;
    LNetStatus status = transport.TransportSend(buffer, static_cast<std::size_t>(count), deadline);
    if (status != LNetStatus::kOk) return status;
  }
  return LNetStatus::kOk;
}

LNetStatus LTlsChannel::Impl::Fill(LTlsTransport& transport, const LNetDeadline& deadline) {
  char buffer[kTransferBytes];
  std::size_t got = 0;
  LNetStatus status = transport.TransportReceive(buffer, sizeof buffer, got, deadline);
  if (status == LNetStatus::kOk) ::BIO_write(fromPeer, buffer, static_cast<int>(got));
  return status;
}

template <class Call>
LNetStatus LTlsChannel::Impl::Drive(LTlsTransport& transport, const LNetDeadline& deadline, Call call,
                                    int& result, std::string& error) {
  for (;;) {
    ::ERR_clear_error();
    result = call();
    int failure = result > 0 ? SSL_ERROR_NONE : ::SSL_get_error(ssl, result);
    // Whatever OpenSSL produced (handshake messages, alerts, records) goes out first.
    LNetStatus sent = Flush(transport, deadline);
    if (failure == SSL_ERROR_NONE) return sent;
    switch (failure) {
      case SSL_ERROR_WANT_READ: {
        if (sent != LNetStatus::kOk) return sent;
        LNetStatus received = Fill(transport, deadline);
        if (received != LNetStatus::kOk) return received;
        break;
      }
      case SSL_ERROR_WANT_WRITE:
        if (sent != LNetStatus::kOk) return sent;
        break;
      case SSL_ERROR_ZERO_RETURN:
        return LNetStatus::kClosed;
      default: {
        long verified = ::SSL_get_verify_result(ssl);
        error = verified != X509_V_OK ? std::string("certificate check failed: ") +
                                            ::X509_verify_cert_error_string(verified)
                                      : LTlsTakeErrors();
        if (error.empty()) error = "TLS failure";
        return LNetStatus::kFailed;
      }
    }
  }
}

LTlsChannel::LTlsChannel(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
LTlsChannel::~LTlsChannel() = default;

std::unique_ptr<LTlsChannel> LTlsChannel::Connect(LTlsTransport& transport, const LTlsClientOptions& options,
                                                  const LNetDeadline& deadline, LNetStatus& status,
                                                  std::string& error) {
  auto impl = std::make_unique<Impl>();
  if (!impl->Setup(options, error)) {
    status = LNetStatus::kFailed;
    return nullptr;
  }
  int result = 0;
  SSL* ssl = impl->ssl;
  status = impl->Drive(transport, deadline, [ssl] { return ::SSL_connect(ssl); }, result, error);
  if (status != LNetStatus::kOk) return nullptr;
  return std::unique_ptr<LTlsChannel>(new LTlsChannel(std::move(impl)));
}

std::unique_ptr<LTlsChannel> LTlsChannel::Accept(LTlsTransport& transport, const LTlsServerContext& server,
                                                 const LNetDeadline& deadline, LNetStatus& status,
                                                 std::string& error) {
  auto impl = std::make_unique<Impl>();
  // The channel holds its own reference: the server may swap its context while it runs.
  impl->context = server.Native();
  ::SSL_CTX_up_ref(impl->context);
  if (!impl->MakeSsl(error)) {
    status = LNetStatus::kFailed;
    return nullptr;
  }
  ::SSL_set_accept_state(impl->ssl);
  int result = 0;
  SSL* ssl = impl->ssl;
  status = impl->Drive(transport, deadline, [ssl] { return ::SSL_accept(ssl); }, result, error);
  if (status != LNetStatus::kOk) return nullptr;
  return std::unique_ptr<LTlsChannel>(new LTlsChannel(std::move(impl)));
}

LNetStatus LTlsChannel::Write(LTlsTransport& transport, const char* data, std::size_t size,
                              const LNetDeadline& deadline, std::string& error) {
  SSL* ssl = impl_->ssl;
  while (size > 0) {
    int piece = size > kTransferBytes ? static_cast<int>(kTransferBytes) : static_cast<int>(size);
    int result = 0;
    LNetStatus status =
        impl_->Drive(transport, deadline, [ssl, data, piece] { return ::SSL_write(ssl, data, piece); }, result, error);
    if (status != LNetStatus::kOk) return status;
    data += result;
    size -= static_cast<std::size_t>(result);
  }
  return LNetStatus::kOk;
}

LNetStatus LTlsChannel::Read(LTlsTransport& transport, char* buffer, std::size_t size, std::size_t& got,
                             const LNetDeadline& deadline, std::string& error) {
  got = 0;
  SSL* ssl = impl_->ssl;
  int piece = size > kTransferBytes ? static_cast<int>(kTransferBytes) : static_cast<int>(size);
  int result = 0;
  LNetStatus status =
      impl_->Drive(transport, deadline, [ssl, buffer, piece] { return ::SSL_read(ssl, buffer, piece); }, result, error);
  if (status == LNetStatus::kOk) got = static_cast<std::size_t>(result);
  return status;
}

void LTlsChannel::Shutdown(LTlsTransport& transport) {
  ::SSL_shutdown(impl_->ssl);
  impl_->Flush(transport, LNetDeadline::After(0));
  ::ERR_clear_error();
}
