// Certificates.h - a certificate authority of one test, and the server certificates that it issues.
#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace Drive::Testing {

struct SslContextDeleter {
  void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
};
using SslContext = std::unique_ptr<SSL_CTX, SslContextDeleter>;

struct CertificateDeleter {
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, CertificateDeleter>;

struct KeyDeleter {
  void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyDeleter>;

class Authority {
 public:
  Authority();

  // The authority's own certificate, as a client is to trust it.
  std::string Pem() const;

  // What a server of that host name needs. The certificate ends so many seconds from now.
  SslContext Issue(const std::string& host, long secondsLeft = 3600) const;

 private:
  Key m_key;
  Certificate m_certificate;
};

}  // namespace Drive::Testing
