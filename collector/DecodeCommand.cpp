// DecodeCommand.cpp - "drivelog-collector decode": what one captured request says.
#include "collector/DecodeCommand.h"

#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <variant>

#include "collector/DataFolder.h"

namespace Drive::Collection {

namespace {

// "Name: value" or "Name:value" a line; empty lines and a request line in front have no place in the result.
Headers ReadHeaders(const std::filesystem::path& file) {
  Headers headers;
  std::istringstream lines(ReadFile(file));
  for (std::string line; std::getline(lines, line);) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) {
      line.pop_back();
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || line.rfind("POST ", 0) == 0) {
      continue;
    }
    const std::size_t value = line.find_first_not_of(' ', colon + 1);
    headers.push_back({line.substr(0, colon), value == std::string::npos ? "" : line.substr(value)});
  }
  return headers;
}

std::optional<RsaKey> KeyOf(const DecodeOrder& order) {
  if (order.channel != Channel::kOperation) {
    return std::nullopt;
  }
  if (order.rsaKeyFile.empty() && order.dataFolder.empty()) {
    throw std::runtime_error("the operation channel needs --rsa-key or --data-dir");
  }
  const bool isGiven = !order.rsaKeyFile.empty();
  return RsaKey(KeyFromPem(ReadFile(isGiven ? order.rsaKeyFile : order.dataFolder / kRsaKeyFile)));
}

}  // namespace

int RunDecode(const DecodeOrder& order, std::ostream& out, std::ostream& err) {
  const std::optional<RsaKey> key = KeyOf(order);
  const Verdict verdict = Check(order.channel, ReadHeaders(order.headersFile), ReadFile(order.bodyFile),
                                {key ? &*key : nullptr, "", order.deflateRule});
  if (const auto* refused = std::get_if<Refused>(&verdict)) {
    err << refused->reason << '\n';
    return 1;
  }
  out << std::get<Accepted>(verdict).plainText << '\n';
  return 0;
}

}  // namespace Drive::Collection
