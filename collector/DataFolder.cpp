// DataFolder.cpp - reads and writes the collector's keys and certificates.
#include "collector/DataFolder.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace Drive::Collection {

namespace {

constexpr char kAuthorityFile[] = "ca.pem";
constexpr char kAuthorityKeyFile[] = "ca-key.pem";
constexpr char kServerFile[] = "server.pem";
constexpr char kServerKeyFile[] = "server-key.pem";

void WriteFile(const std::filesystem::path& file, const std::string& content) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << content;
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write " + file.u8string());
  }
}

// Closed to others before the key is in it.
void WritePrivateFile(const std::filesystem::path& file, const std::string& content) {
  WriteFile(file, "");
  std::filesystem::permissions(file,
                               std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  WriteFile(file, content);
}

}  // namespace

std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (!in) {
    throw std::runtime_error("cannot read " + file.u8string());
  }
  return content;
}

DataFolder::DataFolder(std::filesystem::path folder) : m_folder(std::filesystem::absolute(folder)) {
  std::filesystem::create_directories(m_folder);
}

Identity DataFolder::Read(const char* certificateFile, const char* keyFile) const {
  try {
    return {KeyFromPem(ReadFile(m_folder / keyFile)),
            CertificateFromPem(ReadFile(m_folder / certificateFile))};
  } catch (const std::runtime_error& error) {
    throw std::runtime_error((m_folder / certificateFile).u8string() + " and its key: " + error.what());
  }
}

void DataFolder::Write(const Identity& identity, const char* certificateFile, const char* keyFile) const {
  WritePrivateFile(m_folder / keyFile, KeyToPem(identity.key));
  WriteFile(m_folder / certificateFile, CertificateToPem(identity.certificate));
}

Identity DataFolder::Authority() const {
  if (std::filesystem::exists(CaFile())) {
    return Read(kAuthorityFile, kAuthorityKeyFile);
  }
  Identity made = MakeAuthority();
  Write(made, kAuthorityFile, kAuthorityKeyFile);
  return made;
}

Identity DataFolder::Server(const Identity& authority, ServerCertificate kind) const {
  if (kind != ServerCertificate::kGood) {
    return MakeServerIdentity(authority, kind);
  }
  if (std::filesystem::exists(m_folder / kServerFile)) {
    Identity kept = Read(kServerFile, kServerKeyFile);
    if (IsInDate(kept.certificate) && IsIssuedBy(kept.certificate, authority)) {
      return kept;
    }
  }
  Identity made = MakeServerIdentity(authority, kind);
  Write(made, kServerFile, kServerKeyFile);
  return made;
}

RsaKey DataFolder::Rsa() const {
  const std::filesystem::path file = m_folder / kRsaKeyFile;
  if (!std::filesystem::exists(file)) {
    RsaKey made = RsaKey::Generate();
    WritePrivateFile(file, KeyToPem(made.Pair()));
    return made;
  }
  try {
    return RsaKey(KeyFromPem(ReadFile(file)));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file.u8string() + ": " + error.what());
  }
}

}  // namespace Drive::Collection
