// JsonText.h - JSON values to compact text and back.
#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <string>

namespace Drive::Bilog {

// One line, no blanks, UTF-8.
std::string WriteJson(const Json::Value& value);

// The same, of an object of texts.
std::string WriteJson(const std::map<std::string, std::string>& members);

// The object that `text` holds; nothing when the text is anything else: not JSON, a comment in it, something
// behind the value, another root than an object, values more than 200 levels deep, numbers out of range.
// Of members with the same name the last one counts. Never throws.
std::optional<Json::Value> ParseJsonObject(const std::string& text);

}  // namespace Drive::Bilog
