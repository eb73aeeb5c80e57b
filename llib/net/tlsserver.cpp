#include "llib/net/tlsserver.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "llib/gen/file.h"
#include "llib/net/tls.h"

namespace {

// OpenSSL's reasons, never an empty text.
std::string TakeErrors() {
  std::string text = LTlsTakeErrors();
  return text.empty() ? "échec d'OpenSSL" : text;
}

// The PEM text that write puts into a memory buffer; empty when it failed.
template <class Write>
std::string PemText(Write write) {
  BIO* memory = ::BIO_new(::BIO_s_mem());
  if (memory == nullptr) return {};
  std::string text;
  if (write(memory) == 1) {
    char* data = nullptr;
    long size = BIO_get_mem_data(memory, &data);
    if (size > 0) text.assign(data, static_cast<std::size_t>(size));
  }
  ::BIO_free(memory);
  return text;
}

bool AddExtension(X509* certificate, int nid, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = ::X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
  if (extension == nullptr) return false;
  bool added = ::X509_add_ext(certificate, extension, -1) == 1;
  ::X509_EXTENSION_free(extension);
  return added;
}

// Builds and signs the certificate of key; null when OpenSSL refused.
X509* MakeCertificate(EVP_PKEY* key, const std::vector<std::string>& names, int validDays) {
  X509* certificate = ::X509_new();
  if (certificate == nullptr) return nullptr;
  std::string alternatives;
  for (const std::string& name : names)
    alternatives += (alternatives.empty() ? "" : ",") + std::string(LTlsIsAddressLiteral(name) ? "IP:" : "DNS:") + name;
  BIGNUM* serial = ::BN_new();
  bool built = serial != nullptr && ::BN_rand(serial, 64, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
               ::BN_to_ASN1_INTEGER(serial, ::X509_get_serialNumber(certificate)) != nullptr &&
               ::X509_set_version(certificate, 2) == 1 &&
               ::X509_gmtime_adj(::X509_getm_notBefore(certificate), -3600) != nullptr &&
               ::X509_gmtime_adj(::X509_getm_notAfter(certificate), 86400L * validDays) != nullptr &&
               ::X509_set_pubkey(certificate, key) == 1;
  ::BN_free(serial);
  X509_NAME* subject = ::X509_get_subject_name(certificate);
  built = built && !names.empty() &&
          ::X509_NAME_add_entry_by_txt(subject, "O", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>("Kontavo"), -1, -1, 0) == 1 &&
          ::X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(names[0].c_str()), -1, -1, 0) == 1 &&
          ::X509_set_issuer_name(certificate, subject) == 1 &&
          AddExtension(certificate, NID_basic_constraints, "critical,CA:FALSE") &&
          AddExtension(certificate, NID_key_usage, "critical,digitalSignature") &&
          AddExtension(certificate, NID_ext_key_usage, "serverAuth") &&
          AddExtension(certificate, NID_subject_alt_name, alternatives) &&
          ::X509_sign(certificate, key, ::EVP_sha256()) > 0;
  if (!built) {
    ::X509_free(certificate);
    return nullptr;
  }
  return certificate;
}

}  // namespace

std::shared_ptr<LTlsServerContext> LTlsServerContext::Load(const std::string& certFile, const std::string& keyFile,
                                                           std::string& error) {
  ::ERR_clear_error();
  SSL_CTX* context = ::SSL_CTX_new(::TLS_server_method());
  if (context == nullptr) return error = TakeErrors(), nullptr;
  ::SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
  if (::SSL_CTX_use_certificate_chain_file(context, certFile.c_str()) != 1) {
    error = "certificat " + certFile + " illisible : " + TakeErrors();
  } else if (::SSL_CTX_use_PrivateKey_file(context, keyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
    error = "clé " + keyFile + " illisible : " + TakeErrors();
  } else if (::SSL_CTX_check_private_key(context) != 1) {
    error = "la clé " + keyFile + " ne correspond pas au certificat " + certFile;
  } else {
    return std::shared_ptr<LTlsServerContext>(new LTlsServerContext(context));
  }
  ::SSL_CTX_free(context);
  return nullptr;
}

LTlsServerContext::~LTlsServerContext() { ::SSL_CTX_free(context_); }

bool LTlsMakeSelfSignedCertificate(const std::string& certFile, const std::string& keyFile,
                                   const std::vector<std::string>& names, int validDays, std::string& error) {
  ::ERR_clear_error();
  EVP_PKEY* key = ::EVP_EC_gen("P-256");
  if (key == nullptr) return error = TakeErrors(), false;
  X509* certificate = MakeCertificate(key, names, validDays);
  std::string keyPem, certPem;
  if (certificate != nullptr) {
    keyPem = PemText([key](BIO* out) {
      return ::PEM_write_bio_PrivateKey(out, key, nullptr, nullptr, 0, nullptr, nullptr);
    });
    certPem = PemText([certificate](BIO* out) { return ::PEM_write_bio_X509(out, certificate); });
  }
  ::X509_free(certificate);
  ::EVP_PKEY_free(key);
  if (keyPem.empty() || certPem.empty()) return error = TakeErrors(), false;
  // The key first: a certificate without its key would be useless, a key without certificate is
  // replaced at the next try.
  if (!LFile::WriteAllAtomic(keyFile, keyPem, 0600) || !LFile::WriteAllAtomic(certFile, certPem, 0644)) {
    error = "écriture impossible de " + keyFile + " ou " + certFile;
    return false;
  }
  return true;
}
