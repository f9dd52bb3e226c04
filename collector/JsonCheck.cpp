// JsonCheck.cpp - strict reading of JSON with JsonCpp.
#include "collector/JsonCheck.h"

#include <exception>
#include <memory>

#include "collector/Decoding.h"
#include "collector/Refusal.h"

namespace Drive::Collection {

namespace {

// Clients take extensions of up to JsonCpp's own 1000 levels and put them some levels down.
constexpr int kMaxNesting = 1100;

bool IsOfKind(const Json::Value& value, Kind kind) {
  // JsonCpp's isInt64 and isInt also hold for 2.0, which is no integer on the wire.
  const bool isWhole = value.type() == Json::intValue || value.type() == Json::uintValue;
  switch (kind) {
    case Kind::kString:
      return value.isString();
    case Kind::kInt32:
      return isWhole && value.isInt();
    case Kind::kInt64:
      return isWhole && value.isInt64();
    case Kind::kNumber:
      return value.isNumeric();
    case Kind::kBool:
      return value.isBool();
    case Kind::kObject:
      return value.isObject();
    case Kind::kArray:
      return value.isArray();
    case Kind::kAny:
      return true;
  }
  return false;
}

const char* NameOfKind(Kind kind) {
  static constexpr const char* kNames[] = {"a string",  "a 32-bit integer", "a 64-bit integer", "a number",
                                           "a boolean", "an object",        "an array",         "any"};
  return kNames[static_cast<std::size_t>(kind)];
}

// Counts the members that are there.
std::size_t CheckKinds(const Json::Value& object, const std::string& subject, const Members& members,
                       bool mustBeThere) {
  std::size_t found = 0;
  for (const Member& member : members) {
    if (!object.isMember(member.name)) {
      if (mustBeThere) {
        throw Refusal(subject + " lacks \"" + member.name + "\"");
      }
      continue;
    }
    ++found;
    if (!IsOfKind(object[member.name], member.kind)) {
      throw Refusal("\"" + std::string(member.name) + "\" of " + subject + " is not " +
                    NameOfKind(member.kind));
    }
  }
  return found;
}

bool Holds(const Members& members, const std::string& name) {
  for (const Member& member : members) {
    if (name == member.name) {
      return true;
    }
  }
  return false;
}

// JsonCpp lets comments pass at the beginning of an object, and control characters in strings.
bool HasOnlyJsonCharacters(const std::string& text) {
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool isBlank = c == '\t' || c == '\n' || c == '\r';
    if ((c >= '\0' && c < ' ' && (inString || !isBlank)) || (c == '/' && !inString)) {
      return false;
    }
    if (c == '\\' && inString) {
      ++i;
    } else if (c == '"') {
      inString = !inString;
    }
  }
  return true;
}

}  // namespace

Json::Value ParseObject(const std::string& text, const char* subject) {
  if (!IsUtf8(text)) {
    throw Refusal(std::string(subject) + " is not UTF-8");
  }
  if (!HasOnlyJsonCharacters(text)) {
    throw Refusal(std::string(subject) + " is not JSON: it holds a comment or a control character");
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = kMaxNesting;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(text.data(), text.data() + text.size(), &value, &errors);
  } catch (const std::exception& error) {  // nests too deeply
    errors = error.what();
  }
  if (!parsed) {
    throw Refusal(std::string(subject).append(" is not JSON: ").append(errors));
  }
  if (!value.isObject()) {
    throw Refusal(std::string(subject) + " is not an object");
  }
  return value;
}

void RequireMembers(const Json::Value& object, const std::string& subject, const Members& required,
                    const Members& optional) {
  if (!object.isObject()) {
    throw Refusal(subject + " is not an object");
  }
  const std::size_t known =
      CheckKinds(object, subject, required, true) + CheckKinds(object, subject, optional, false);
  if (known == object.size()) {
    return;
  }
  for (const std::string& name : object.getMemberNames()) {
    if (!Holds(required, name) && !Holds(optional, name)) {
      throw Refusal(subject + " has an unknown member " + Json::valueToQuotedString(name.c_str()));
    }
  }
}

std::string CompactText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

}  // namespace Drive::Collection
