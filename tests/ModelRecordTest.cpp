// ModelRecordTest.cpp - the record as a value.
#include <gtest/gtest.h>

#include <utility>

#include "drivelog/UserLog.h"

namespace Drive::Testing {
namespace {

using Bilog::UserLog;

TEST(UserLogTest, CopiesAreIndependentAndSelfAssignmentChangesNothing) {
  const std::wstring text(40, L'x');  // too long to be stored inside the string
  UserLog original;
  original.set_Info(text);
  original.set_ResidenceTime(-7);

  UserLog copy(original);
  copy.set_Info(L"changed");
  EXPECT_EQ(text, original.get_Info());

  UserLog assigned;
  assigned = original;
  const UserLog& alias = assigned;
  assigned = alias;
  EXPECT_EQ(text, assigned.get_Info());

  const UserLog moved(std::move(assigned));
  EXPECT_EQ(text, moved.get_Info());
  EXPECT_EQ(-7, moved.get_ResidenceTime());
}

}  // namespace
}  // namespace Drive::Testing
