// RequestHeaders.h - the header lines of the upload requests.
#pragma once

#include <string>
#include <vector>

namespace Drive::Bilog {

// The header lines of one request in their order: name, colon, value, no blank between. Control characters
// are removed from the values, so that no value can end its line.
//
// Surprise: a line with an empty value is in the list, but libcurl leaves such a header out of the request.

// Of the BI and operation-log channels. Their bodies are compressed, but no Content-Encoding says so: it is
// part of the agreed format.
std::vector<std::string> CreateReqHeader(const std::string& requestId);

// Of the UBA channel. `udid` is the hashed device identifier.
std::vector<std::string> CreateUbaReqHeader(const std::string& requestId, const std::string& udid);

}  // namespace Drive::Bilog
