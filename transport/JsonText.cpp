// JsonText.cpp - JSON values to compact text and back.
#include "transport/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>

#include <cmath>
#include <exception>
#include <memory>
#include <sstream>

namespace Drive::Bilog {
namespace {

constexpr int kMaxLevels = 200;

// Both builders are never destroyed, since detached threads use them until the process is gone.

const Json::StreamWriterBuilder& WriterBuilder() {
  static const auto& builder = *[] {
    auto* made = new Json::StreamWriterBuilder;
    (*made)["indentation"] = "";
    return made;
  }();
  return builder;
}

const Json::CharReaderBuilder& ReaderBuilder() {
  static const auto& builder = *[] {
    auto* made = new Json::CharReaderBuilder;
    Json::CharReaderBuilder::strictMode(&made->settings_);
    (*made)["rejectDupKeys"] = false;  // the last one counts
    (*made)["stackLimit"] = kMaxLevels;
    return made;
  }();
  return builder;
}

// JsonCpp's strict mode still takes comments inside of objects and arrays. Outside of strings, a slash can be
// nothing else.
bool HasComment(const std::string& text) {
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') {
      isInString = !isInString;
    } else if (text[i] == '\\' && isInString) {
      ++i;  // whatever is escaped ends no string
    } else if (text[i] == '/' && !isInString) {
      return true;
    }
  }
  return false;
}

// Some releases of JsonCpp read a number that is too large as infinity.
bool HasOnlyFiniteNumbers(const Json::Value& value) {
  if (value.type() == Json::realValue) {
    return std::isfinite(value.asDouble());
  }
  if (value.isArray() || value.isObject()) {
    for (const Json::Value& member : value) {
      if (!HasOnlyFiniteNumbers(member)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

std::string WriteJson(const Json::Value& value) {
  std::ostringstream text;
  const std::unique_ptr<Json::StreamWriter> writer(WriterBuilder().newStreamWriter());
  writer->write(value, &text);
  return text.str();
}

std::string WriteJson(const std::map<std::string, std::string>& members) {
  Json::Value object(Json::objectValue);
  for (const auto& [key, value] : members) {
    object[key] = value;
  }
  return WriteJson(object);
}

std::optional<Json::Value> ParseJsonObject(const std::string& text) {
  if (HasComment(text)) {
    return std::nullopt;
  }
  try {
    const std::unique_ptr<Json::CharReader> reader(ReaderBuilder().newCharReader());
    Json::Value value;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, nullptr) || !value.isObject() ||
        !HasOnlyFiniteNumbers(value)) {
      return std::nullopt;
    }
    return value;
  } catch (const std::exception&) {  // nested too deeply
    return std::nullopt;
  }
}

}  // namespace Drive::Bilog
