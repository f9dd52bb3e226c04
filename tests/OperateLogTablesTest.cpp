// OperateLogTablesTest.cpp - the names of events and actions.
#include <gtest/gtest.h>

#include "client/common/EncryptHelper.h"
#include "client/log/TypeConvert.h"
#include "operatelog/EventTables.h"

namespace Drive::OperateLog {
namespace {

// The names of the values from 0 on, with spaces between them; the values around them have none.
template <typename Enumeration>
std::string Names(std::wstring_view (*find)(Enumeration), int count) {
  std::wstring names;
  for (int value = 0; value < count; ++value) {
    names.append(value > 0 ? L" " : L"").append(find(static_cast<Enumeration>(value)));
  }
  for (const int unknown : {-1, count, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(find(static_cast<Enumeration>(unknown)), L"") << unknown;
  }
  return TypeConvert::UnicodeToUTF8(names);
}

TEST(EventTablesTest, NameEachEventAndActionAndNoOther) {
  EXPECT_EQ(EncryptHelper::SHA256_Encode(Names(EventName, 77)),
            "c7dbc0ad664d553dbae30456d503f811bdf31565f5b0931d178042e13dc500b8")
      << "collectors know these names";
  EXPECT_EQ(Names(ActionKind, 5), "basic_opr switch_module file_translate switch_page special_opr");
  EXPECT_EQ(EventName(OperationBasicEventType::kDriveTrayTransMgrDownloadFailByFileOccupy),
            L"DriveTray.transMgr.downloadFailByFileOccupy");
}

}  // namespace
}  // namespace Drive::OperateLog
