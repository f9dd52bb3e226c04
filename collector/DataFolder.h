// DataFolder.h - the collector's folder: its authority, server certificate and RSA key, made on first use.
//
//   ca.pem          what clients trust            ca-key.pem
//   server.pem      for loopback                  server-key.pem
//   rsa-key.pem     what clients encipher for
#pragma once

#include <filesystem>
#include <string>

#include "collector/Certificates.h"
#include "collector/Cipher.h"

namespace Drive::Collection {

inline constexpr char kRsaKeyFile[] = "rsa-key.pem";

// Private keys can be read by their owner only. Everything throws std::runtime_error with the file's name.
//
// Thread-safety: none.
class DataFolder {
 public:
  explicit DataFolder(std::filesystem::path folder);

  Identity Authority() const;
  // The good one is kept and renewed when it runs out; the faulty ones are made anew each time.
  Identity Server(const Identity& authority, ServerCertificate kind) const;
  RsaKey Rsa() const;

  std::filesystem::path CaFile() const { return m_folder / "ca.pem"; }
  std::filesystem::path DatabaseFile() const { return m_folder / "requests.db"; }

 private:
  Identity Read(const char* certificateFile, const char* keyFile) const;
  void Write(const Identity& identity, const char* certificateFile, const char* keyFile) const;

  std::filesystem::path m_folder;
};

// The whole file as bytes. Throws std::runtime_error.
std::string ReadFile(const std::filesystem::path& file);

}  // namespace Drive::Collection
