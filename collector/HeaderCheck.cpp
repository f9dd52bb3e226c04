// HeaderCheck.cpp - the two header sets of upload requests.
#include "collector/HeaderCheck.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

#include "collector/Decoding.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

enum class Rule {
  kFixed,   // there, with exactly this value
  kFilled,  // there, with any value but the empty one
  kHash,    // there, a SHA-256 text
  kOpen     // any value; a client's empty value makes its HTTP library leave the header out
};

struct HeaderRule {
  const char* name;
  Rule rule;
  const char* value = "";
};

constexpr HeaderRule kCommonRules[] = {
    {"Content-Type", Rule::kFixed, "application/json"},
    {"Request-Id", Rule::kFilled},
    {"App-Ver", Rule::kFixed, "1.1.1.1"},
    {"App-Id", Rule::kFixed, "com.talvik.cloud.pc"},
    {"Sdk-Name", Rule::kFixed, "OrvellePC"},
    {"Sdk-Ver", Rule::kFixed, "1"},
    {"Device-Type", Rule::kFixed, "OrvellePC"},
    {"x-zq-client-mode", Rule::kFixed, "frontend"},
    {"x-zq-os-brand", Rule::kFixed, "Windows"},
};

constexpr HeaderRule kUbaRules[] = {
    {"Content-Type", Rule::kFixed, "application/json"},
    {"Content-Encoding", Rule::kFixed, "gzip"},
    {"X-ReqID", Rule::kFilled},
    {"X-AppID", Rule::kFixed, "com.talvik.cloud.pc"},
    {"X-Model", Rule::kOpen},
    {"X-AppVer", Rule::kOpen},
    {"X-UDID", Rule::kHash},
    {"X-AccountID", Rule::kFilled},
    {"User-Agent", Rule::kOpen},
    {"X-RomVer", Rule::kFilled},
    {"X-Lang", Rule::kFixed, "zh_CN"},
    {"X-DeliveryPlace", Rule::kFixed, "CN"},
    {"Authorization", Rule::kFilled},
    {"X-zq-auth-version", Rule::kFixed, "1"},
    {"x-zq-client-mode", Rule::kFixed, "frontend"},
    {"x-zq-os-brand", Rule::kFixed, "Windows"},
};

constexpr const char* kTransportHeaders[] = {"Host",       "Accept", "Accept-Encoding", "Connection",
                                             "User-Agent", "Expect", "Content-Length"};

constexpr std::size_t kHashDigits = 64;

std::vector<const Header*> Find(const Headers& headers, const std::string& name) {
  std::vector<const Header*> found;
  for (const Header& header : headers) {
    if (IsSameHeaderName(header.name, name)) {
      found.push_back(&header);
    }
  }
  return found;
}

std::string ValueOf(const Headers& headers, const char* name) {
  const auto found = Find(headers, name);
  return found.empty() ? std::string() : found.front()->value;
}

void CheckHeader(const Headers& headers, const HeaderRule& rule) {
  const std::string name = rule.name;
  const auto found = Find(headers, name);
  if (found.empty() && rule.rule == Rule::kOpen) {
    return;
  }
  if (found.size() != 1) {
    throw Refusal("header " + name + (found.empty() ? " is missing" : " comes more than once"));
  }
  const Header& header = *found.front();
  if (header.name != name) {
    throw Refusal("header " + name + " is spelled " + header.name);
  }
  const bool good = rule.rule == Rule::kFixed    ? header.value == rule.value
                    : rule.rule == Rule::kFilled ? !header.value.empty()
                    : rule.rule == Rule::kHash   ? IsLowerCaseHex(header.value, kHashDigits)
                                                 : true;
  if (!good) {
    throw Refusal("header " + name + " has the wrong value \"" + header.value + "\"");
  }
}

template <std::size_t N>
void CheckSet(const Headers& headers, const HeaderRule (&rules)[N]) {
  for (const HeaderRule& rule : rules) {
    CheckHeader(headers, rule);
  }
  for (const Header& header : headers) {
    const auto isIt = [&](const char* name) { return IsSameHeaderName(header.name, name); };
    if (std::none_of(std::begin(rules), std::end(rules), [&](const HeaderRule& r) { return isIt(r.name); }) &&
        std::none_of(std::begin(kTransportHeaders), std::end(kTransportHeaders), isIt)) {
      throw Refusal("unknown header " + header.name);
    }
  }
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool IsUrlEncoded(const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto character = static_cast<unsigned char>(text[i]);
    const bool isLetterOrDigit = (character >= '0' && character <= '9') ||
                                 (character >= 'A' && character <= 'Z') ||
                                 (character >= 'a' && character <= 'z');
    if (text[i] == '%') {
      const std::string digits = text.substr(i + 1, 2);
      if (digits.size() != 2 || digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos) {
        return false;
      }
      i += 2;
    } else if (!isLetterOrDigit && std::string("-_.~").find(text[i]) == std::string::npos) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::string CheckHeaders(Channel channel, const Headers& headers) {
  if (channel != Channel::kUba) {
    CheckSet(headers, kCommonRules);
    return ValueOf(headers, "Request-Id");
  }
  CheckSet(headers, kUbaRules);
  // The user agent is the client's name and version in one word.
  Require(EndsWith(ValueOf(headers, "User-Agent"), ValueOf(headers, "X-AppVer")),
          "header User-Agent does not end with the version of X-AppVer");
  return ValueOf(headers, "X-ReqID");
}

std::optional<std::string> TokenOf(const Headers& headers) {
  const std::string kPrefix = "8:null:null:null:";
  const auto credential = DecodeBase64(ValueOf(headers, "Authorization"));
  if (!credential || credential->compare(0, kPrefix.size(), kPrefix) != 0) {
    return std::nullopt;
  }
  std::string token = credential->substr(kPrefix.size());
  return IsUrlEncoded(token) ? std::optional(token) : std::nullopt;
}

}  // namespace Drive::Collection
