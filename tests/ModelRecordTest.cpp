// ModelRecordTest.cpp - the record as a value.
#include <gtest/gtest.h>

#include <utility>

#include "drivelog/UserLog.h"
#include "model/UserLogFields.h"

namespace Drive::Testing {
namespace {

using Bilog::UserLog;
using Bilog::UserLogFields;

struct TextField {
  const char* name;
  UserLogFields::Text field;
  std::wstring (UserLog::*get)() const;
  void (UserLog::*set)(std::wstring);
};

#define TEXT_FIELD(name) \
  { #name, UserLogFields::k##name, &UserLog::get_##name, &UserLog::set_##name }

// In the order of the record.
const TextField kTextFields[] = {
    TEXT_FIELD(Time),    TEXT_FIELD(Action),     TEXT_FIELD(UserId),     TEXT_FIELD(DevId),
    TEXT_FIELD(Code),    TEXT_FIELD(Info),       TEXT_FIELD(Extend),     TEXT_FIELD(TraceId),
    TEXT_FIELD(Model),   TEXT_FIELD(Romversion), TEXT_FIELD(Appversion), TEXT_FIELD(Reqsize),
    TEXT_FIELD(Rspsize), TEXT_FIELD(CurModule),  TEXT_FIELD(Actiontype), TEXT_FIELD(NextModule),
    TEXT_FIELD(OprType),
};

UserLog FilledRecord() {
  UserLog record;
  for (const TextField& field : kTextFields) (record.*field.set)(std::wstring(40, L'=') + field.name[0]);
  record.set_UseTime(1.5);
  record.set_ResidenceTime(-7);
  return record;
}

bool AreTextsEqual(const UserLog& left, const UserLog& right) {
  for (const TextField& field : kTextFields) {
    if (left.*field.field != right.*field.field) return false;
  }
  return true;
}

TEST(UserLogTest, EveryTextHasItsOwnField) {
  UserLog record;
  for (const TextField& field : kTextFields) {
    EXPECT_EQ(L"", (record.*field.get)()) << field.name;
    (record.*field.set)(std::wstring(field.name, field.name + std::string(field.name).size()));
  }
  for (const TextField& field : kTextFields) {
    const std::wstring name(field.name, field.name + std::string(field.name).size());
    EXPECT_EQ(name, (record.*field.get)()) << field.name;
    EXPECT_EQ(name, record.*field.field) << field.name;
  }
}

TEST(UserLogTest, CopiesAreIndependentAndSelfAssignmentChangesNothing) {
  const UserLog original = FilledRecord();
  UserLog copy(original);
  copy.set_Info(L"changed");
  copy.set_UseTime(2.0);
  EXPECT_FALSE(AreTextsEqual(original, copy));
  EXPECT_EQ(1.5, original.get_UseTime());

  UserLog assigned;
  assigned = original;
  const UserLog& alias = assigned;
  assigned = alias;
  EXPECT_TRUE(AreTextsEqual(original, assigned));
  EXPECT_EQ(-7, assigned.get_ResidenceTime());

  const UserLog moved(std::move(assigned));
  EXPECT_TRUE(AreTextsEqual(original, moved));
}

}  // namespace
}  // namespace Drive::Testing
