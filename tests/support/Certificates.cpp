// Certificates.cpp - a certificate authority of one test, and the server certificates that it issues.
#include "tests/support/Certificates.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>

namespace Drive::Testing {
namespace {

void Require(bool succeeded) {
  if (!succeeded) {
    throw std::runtime_error(ERR_reason_error_string(ERR_peek_last_error()));
  }
}

Key MakeKey() {
  Key key(EVP_EC_gen("P-256"));
  Require(key != nullptr);
  return key;
}

void AddExtension(X509* certificate, int name, const std::string& value) {
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, name, value.c_str()), &X509_EXTENSION_free);
  Require(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1);
}

Certificate MakeUnsigned(const std::string& name, EVP_PKEY* key, long secondsLeft) {
  static std::atomic<long> serial{1};
  Certificate certificate(X509_new());
  Require(certificate != nullptr && X509_set_version(certificate.get(), X509_VERSION_3) == 1);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial++);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -7200);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), secondsLeft);
  Require(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0) == 1 &&
          X509_set_pubkey(certificate.get(), key) == 1);
  return certificate;
}

std::string UniqueName() {
  static std::atomic<int> count{0};
  return "Test Authority " + std::to_string(++count);
}

}  // namespace

Authority::Authority() : m_key(MakeKey()), m_certificate(MakeUnsigned(UniqueName(), m_key.get(), 3600)) {
  X509* const certificate = m_certificate.get();
  Require(X509_set_issuer_name(certificate, X509_get_subject_name(certificate)) == 1);
  AddExtension(certificate, NID_basic_constraints, "critical,CA:TRUE");
  Require(X509_sign(certificate, m_key.get(), EVP_sha256()) != 0);
}

std::string Authority::Pem() const {
  const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
  Require(memory != nullptr && PEM_write_bio_X509(memory.get(), m_certificate.get()) == 1);
  char* text = nullptr;
  const long length = BIO_get_mem_data(memory.get(), &text);
  return {text, static_cast<std::size_t>(length)};
}

SslContext Authority::Issue(const std::string& host, long secondsLeft) const {
  const Key key = MakeKey();
  const Certificate certificate = MakeUnsigned(host, key.get(), secondsLeft);
  Require(X509_set_issuer_name(certificate.get(), X509_get_subject_name(m_certificate.get())) == 1);
  AddExtension(certificate.get(), NID_subject_alt_name, "DNS:" + host);
  Require(X509_sign(certificate.get(), m_key.get(), EVP_sha256()) != 0);

  SslContext context(SSL_CTX_new(TLS_server_method()));
  Require(context != nullptr && SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
          SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1);
  return context;
}

}  // namespace Drive::Testing
