// CollectorRequests.h - requests of the three channels, encoded step by step.
#pragma once

#include <json/json.h>

#include <string>

#include "collector/Request.h"

namespace Drive::Testing {

// The content is that of tests/vectors.
struct TestRequest {
  Collection::Channel channel;
  Collection::Headers headers;
  Json::Value plain;      // what is compressed and enciphered into the body
  std::string rsaKeyHex;  // of the collector, for the operation channel

  // Breaks single steps of the operation channel's encoding.
  std::string chifer;  // instead of the enciphered AES key
  std::string event;   // instead of the enciphered payload

  std::string Body() const;
  std::string& Header(const std::string& name);  // its value; added when it is not there
};

// A good request with two records, under this id.
TestRequest MakeRequest(Collection::Channel channel, const std::string& rsaKeyHex,
                        const std::string& requestId = "A1B220240305070809012");

std::string Zlib(const std::string& text);
std::string Base64(const std::string& bytes);
std::string EncipherKey(const std::string& publicKeyHex, const std::string& text);

}  // namespace Drive::Testing
