// Certificates.h - makes the collector's own authority and server certificates.
#pragma once

#include <openssl/x509.h>

#include <memory>
#include <string>

#include "collector/Cipher.h"

namespace Drive::Collection {

struct X509Deleter {
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, X509Deleter>;

struct Identity {
  Key key;
  Certificate certificate;
};

// What a server certificate is good for; all but the first are for tests of clients.
enum class ServerCertificate {
  kGood,              // 127.0.0.1, ::1 and localhost, for a year
  kExpired,           // as good as the first until yesterday
  kWrongHost,         // in date, for a host of another name
  kForeignAuthority,  // like the first, from an authority that no client knows
};

// P-256 keys, which take no time to make. Both throw std::runtime_error.
Identity MakeAuthority();
Identity MakeServerIdentity(const Identity& authority, ServerCertificate kind);

std::string CertificateToPem(const Certificate& certificate);
Certificate CertificateFromPem(const std::string& pem);  // throws std::runtime_error

bool IsInDate(const Certificate& certificate);
bool IsIssuedBy(const Certificate& certificate, const Identity& authority);

}  // namespace Drive::Collection
