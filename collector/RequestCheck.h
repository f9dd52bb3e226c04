// RequestCheck.h - decides whether a request is what a client of this library sends, and what it says.
#pragma once

#include <json/json.h>

#include <string>
#include <variant>
#include <vector>

#include "collector/Decoding.h"
#include "collector/Request.h"

namespace Drive::Collection {

class RsaKey;

struct Accepted {
  std::string requestId;
  std::string plainText;             // the whole request as JSON, nothing compressed or enciphered left
  std::vector<Json::Value> records;  // what it carries, in its order
};

struct Refused {
  int status = 422;  // HTTP status of the answer
  std::string reason;
};

using Verdict = std::variant<Accepted, Refused>;

struct CheckSettings {
  const RsaKey* rsaKey = nullptr;  // borrowed; the operation channel needs it
  std::string expectedToken;       // access token that UBA requests must carry; empty: any
  DeflateRule deflateRule = DeflateRule::kAsZlibMakes;
};

// Never throws on anything that a request holds.
Verdict Check(Channel channel, const Headers& headers, const std::string& body,
              const CheckSettings& settings);

// The checks of the three bodies, each in a file of its own. `requestId` is the one of the headers. They
// throw Refusal.
Accepted CheckMaintenanceBody(const std::string& requestId, const std::string& body, DeflateRule rule);
Accepted CheckOperationBody(const std::string& requestId, const std::string& body, DeflateRule rule,
                            const RsaKey& rsaKey);
Accepted CheckUbaBody(const std::string& requestId, const std::string& body, DeflateRule rule);

}  // namespace Drive::Collection
