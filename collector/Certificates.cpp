// Certificates.cpp - certificates by OpenSSL's X.509 functions.
#include "collector/Certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <utility>

namespace Drive::Collection {

namespace {

constexpr int kX509Version3 = 2;  // counted from 0
constexpr int kAuthorityDays = 3650;
constexpr int kServerDays = 365;
constexpr long kSecondsPerDay = 86400;

struct BioDeleter {
  void operator()(BIO* bio) const noexcept { BIO_free(bio); }
};
using Bio = std::unique_ptr<BIO, BioDeleter>;

struct ExtensionDeleter {
  void operator()(X509_EXTENSION* extension) const noexcept { X509_EXTENSION_free(extension); }
};
using Extension = std::unique_ptr<X509_EXTENSION, ExtensionDeleter>;

struct Validity {
  int firstDay;  // counted from today
  int lastDay;
};

struct ExtensionText {
  int nid;
  const char* text;
};

void Check(bool done) {
  if (!done) {
    ERR_clear_error();
    throw std::runtime_error("cannot make a certificate");
  }
}

void SetSerial(X509* certificate) {
  std::uint64_t serial = 0;
  Check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
  Check(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1) == 1);
}

// `issuer` is null for a certificate that signs itself.
Identity Make(const char* name, Validity validity, std::initializer_list<ExtensionText> extensions,
              const Identity* issuer) {
  Identity identity{Key(EVP_EC_gen("P-256")), Certificate(X509_new())};
  Check(identity.key && identity.certificate);
  X509* certificate = identity.certificate.get();
  Check(X509_set_version(certificate, kX509Version3) == 1);
  SetSerial(certificate);
  Check(X509_gmtime_adj(X509_getm_notBefore(certificate), validity.firstDay * kSecondsPerDay) != nullptr);
  Check(X509_gmtime_adj(X509_getm_notAfter(certificate), validity.lastDay * kSecondsPerDay) != nullptr);
  Check(X509_set_pubkey(certificate, identity.key.get()) == 1);

  X509_NAME* subject = X509_get_subject_name(certificate);
  Check(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(name),
                                   -1, -1, 0) == 1);
  X509* issuerCertificate = issuer != nullptr ? issuer->certificate.get() : certificate;
  Check(X509_set_issuer_name(certificate, X509_get_subject_name(issuerCertificate)) == 1);

  X509V3_CTX context;
  X509V3_set_ctx(&context, issuerCertificate, certificate, nullptr, nullptr, 0);
  for (const ExtensionText& text : extensions) {
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, text.nid, text.text));
    Check(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
  }
  Check(X509_sign(certificate, issuer != nullptr ? issuer->key.get() : identity.key.get(), EVP_sha256()) > 0);
  return identity;
}

}  // namespace

Identity MakeAuthority() {
  return Make("drivelog collector authority", {-1, kAuthorityDays},
              {{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
               {NID_key_usage, "critical,keyCertSign,cRLSign"},
               {NID_subject_key_identifier, "hash"}},
              nullptr);
}

Identity MakeServerIdentity(const Identity& authority, ServerCertificate kind) {
  if (kind == ServerCertificate::kForeignAuthority) {
    return MakeServerIdentity(MakeAuthority(), ServerCertificate::kGood);
  }
  const bool expired = kind == ServerCertificate::kExpired;
  const char* hosts =
      kind == ServerCertificate::kWrongHost ? "DNS:elsewhere.invalid" : "IP:127.0.0.1,IP:::1,DNS:localhost";
  return Make("drivelog collector", expired ? Validity{-30, -1} : Validity{-1, kServerDays},
              {{NID_basic_constraints, "critical,CA:FALSE"},
               {NID_key_usage, "critical,digitalSignature"},
               {NID_ext_key_usage, "serverAuth"},
               {NID_subject_alt_name, hosts},
               {NID_subject_key_identifier, "hash"},
               {NID_authority_key_identifier, "keyid"}},
              &authority);
}

std::string CertificateToPem(const Certificate& certificate) {
  const Bio bio(BIO_new(BIO_s_mem()));
  Check(bio && PEM_write_bio_X509(bio.get(), certificate.get()) == 1);
  char* text = nullptr;
  const long length = BIO_get_mem_data(bio.get(), &text);
  return std::string(text, static_cast<std::size_t>(length));
}

Certificate CertificateFromPem(const std::string& pem) {
  const Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  Certificate certificate(bio ? PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr) : nullptr);
  if (!certificate) {
    ERR_clear_error();
    throw std::runtime_error("not a certificate in PEM form");
  }
  return certificate;
}

bool IsInDate(const Certificate& certificate) {
  return X509_cmp_current_time(X509_get0_notBefore(certificate.get())) < 0 &&
         X509_cmp_current_time(X509_get0_notAfter(certificate.get())) > 0;
}

bool IsIssuedBy(const Certificate& certificate, const Identity& authority) {
  const bool issued = X509_verify(certificate.get(), authority.key.get()) == 1;
  ERR_clear_error();
  return issued;
}

}  // namespace Drive::Collection
