// JsonCheck.h - strict reading of JSON: exactly these members, of exactly these types.
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

namespace Drive::Collection {

enum class Kind { kString, kInt32, kInt64, kNumber, kBool, kObject, kArray, kAny };

struct Member {
  const char* name;
  Kind kind;
};
using Members = std::vector<Member>;

// The object that `text` holds: valid UTF-8, no comments, no member twice, nothing behind it. `subject` names
// it in the reason. Throws Refusal.
Json::Value ParseObject(const std::string& text, const char* subject);

// Throws Refusal unless `object` is an object that has all of `required`, any of `optional`, and no more.
void RequireMembers(const Json::Value& object, const std::string& subject, const Members& required,
                    const Members& optional = {});

// On one line, in ASCII.
std::string CompactText(const Json::Value& value);

}  // namespace Drive::Collection
