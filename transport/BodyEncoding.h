// BodyEncoding.h - JSON text to request bodies.
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace Drive::Bilog {

// A zlib body of more bytes than this is not made: the batch is to be split.
inline constexpr std::size_t kMaxZlibBytes = 200000;

// One gzip member. False for an empty text, and when zlib fails; `body` then holds what there is.
bool GzipCompress(const std::string& text, std::string& body);

// zlib format, at most kMaxZlibBytes. Empty when the text is empty or its compressed form is larger.
std::vector<unsigned char> ZlibCompress(const std::string& text);

// The body of a BI request: {"header": {...}, "event": events}, in zlib format; empty as for ZlibCompress.
std::vector<unsigned char> MakeBiEnvelope(const std::wstring& requestId, const std::wstring& serviceId,
                                          Json::Value events);

}  // namespace Drive::Bilog
