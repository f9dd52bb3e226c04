// RequestCheck.cpp - headers, then credential, then body: the first fault found is the reason.
#include "collector/RequestCheck.h"

#include <exception>
#include <optional>

#include "collector/HeaderCheck.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

constexpr int kBadRequest = 400;
constexpr int kInternalError = 500;

void CheckToken(const Headers& headers, const std::string& expectedToken) {
  const auto token = TokenOf(headers);
  Require(token.has_value(), "header Authorization holds no token credential");
  if (!expectedToken.empty() && *token != expectedToken) {
    // By this status and text a client knows that it must renew its token.
    throw Refusal("interface auth failed", kBadRequest);
  }
}

}  // namespace

Verdict Check(Channel channel, const Headers& headers, const std::string& body,
              const CheckSettings& settings) {
  try {
    const std::string requestId = CheckHeaders(channel, headers);
    switch (channel) {
      case Channel::kMaintenance:
        return CheckMaintenanceBody(requestId, body, settings.deflateRule);
      case Channel::kOperation:
        Require(settings.rsaKey != nullptr, "no RSA key to decipher with");
        return CheckOperationBody(requestId, body, settings.deflateRule, *settings.rsaKey);
      case Channel::kUba:
        CheckToken(headers, settings.expectedToken);
        return CheckUbaBody(requestId, body, settings.deflateRule);
    }
    return Refused{kInternalError, "no such channel"};
  } catch (const Refusal& refusal) {
    return Refused{refusal.Status(), refusal.what()};
  } catch (const std::exception& error) {
    return Refused{kInternalError, std::string("the check failed: ") + error.what()};
  }
}

}  // namespace Drive::Collection
