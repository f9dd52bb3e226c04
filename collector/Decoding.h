// Decoding.h - undoes the compressions and text forms that request bodies are made of.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace Drive::Collection {

// What is asked of compressed data beyond that it can be decompressed.
enum class DeflateRule {
  kAny,         // whatever decompresses, with its check sum right
  kAsZlibMakes  // exactly the bytes that zlib makes of the text at its default level
};

// The text of a whole zlib stream or of a whole single gzip member. Throws Refusal when the data is damaged,
// ends early, is followed by anything, or grows beyond a limit that no honest request reaches.
//
// Deflate data has several forms for one text, and its last byte has bits that no check sum covers, so a
// changed byte can go unseen. kAsZlibMakes leaves one form only; a client that links another deflate
// implementation needs kAny.
std::string InflateZlib(const std::string& data, DeflateRule rule);
std::string InflateGzip(const std::string& data, DeflateRule rule);

// Canonical Base64 on one line; lower-case hexadecimal text. Nothing when the text is not of that form.
std::optional<std::string> DecodeBase64(const std::string& text);
std::optional<std::string> DecodeHex(const std::string& text);
std::string EncodeHex(const std::string& bytes);

bool IsLowerCaseHex(const std::string& text, std::size_t digits);
bool IsUtf8(const std::string& text);

}  // namespace Drive::Collection
