// OperateLogTablesTest.cpp - the names of events and actions, and the texts of the list form.
#include <gtest/gtest.h>

#include "operatelog/EventTables.h"
#include "operatelog/FileInfoGroups.h"

namespace Drive::OperateLog {
namespace {

const std::wstring_view kNames[] = {L"Drive.mouse.downloadFile",
                                    L"Drive.mouse.releaseSpace",
                                    L"Drive.mouse.moveCloudDisk",
                                    L"Drive.action.newFile",
                                    L"Drive.action.deleteFile",
                                    L"Drive.action.renameFile",
                                    L"Drive.action.dragFile",
                                    L"Drive.action.editFile",
                                    L"Drive.action.newFolder",
                                    L"Drive.action.deleteFolder",
                                    L"Drive.action.renameFolder",
                                    L"Drive.action.dragFolder",
                                    L"DriveTray.ui.show",
                                    L"DriveTray.menu.recentTab",
                                    L"DriveTray.recent.openFile",
                                    L"DriveTray.recent.openMore",
                                    L"DriveTray.recent.openMode",
                                    L"DriveTray.recent.openFolder",
                                    L"DriveTray.recent.refresh",
                                    L"DriveTray.menu.transMgrTab",
                                    L"DriveTray.transMgr.upload",
                                    L"DriveTray.transMgr.pauseUploadTask",
                                    L"DriveTray.transMgr.continueUploadTask",
                                    L"DriveTray.transMgr.startAllUploadTask",
                                    L"DriveTray.transMgr.pauseAllUploadTask",
                                    L"DriveTray.transMgr.cancelUploadTask",
                                    L"DriveTray.transMgr.deleteUploadTask",
                                    L"DriveTray.transMgr.clearUploadTask",
                                    L"DriveTray.transMgr.uploadFailList",
                                    L"DriveTray.transMgr.viewUploadFailFileDirectory",
                                    L"DriveTray.transMgr.deletUploadFailFileRecord",
                                    L"DriveTray.transMgr.clearUploadFailFileRecord",
                                    L"DriveTray.transMgr.download",
                                    L"DriveTray.transMgr.pauseDownloadTask",
                                    L"DriveTray.transMgr.continueDownloadTask",
                                    L"DriveTray.transMgr.startAllDownloadTask",
                                    L"DriveTray.transMgr.pauseAllDownloadTask",
                                    L"DriveTray.transMgr.cancelAllDownloadTask",
                                    L"DriveTray.transMgr.downloadFailList",
                                    L"DriveTray.transMgr.viewDownloadFailFileDirectory",
                                    L"DriveTray.transMgr.deletDownloadFaillFileRecord",
                                    L"DriveTray.transMgr.clearDownloadFailFileRecord",
                                    L"DriveTray.button.cloudDiskTray",
                                    L"DriveTray.button.helpAndService",
                                    L"DriveTray.button.webSite",
                                    L"DriveTray.button.accessSyncFolder",
                                    L"DriveTray.more.upgrade",
                                    L"DriveTray.more.openClient",
                                    L"DriveTray.more.pauseSync",
                                    L"DriveTray.more.continueSync",
                                    L"DriveTray.more.settings",
                                    L"DriveTray.more.problemAndSuggestion",
                                    L"DriveStatusBar.button.login",
                                    L"DriveStatusBar.button.upgrade",
                                    L"DriveStatusBar.more.helpAndService",
                                    L"DriveStatusBar.more.recentlyDelete",
                                    L"DriveStatusBar.transTask.viewDetail",
                                    L"DriveStatusBar.transTask.viewFailDetail",
                                    L"DriveStatusBar.transTask.continueSync",
                                    L"DriveTray.button.openSyncFolder",
                                    L"Drive.button.uploadFile",
                                    L"Drive.mouse.upgrage",
                                    L"Other.application.crash",
                                    L"Drive.explorer.createDriveEntryFail",
                                    L"Drive.computer.createDriveEntryFail",
                                    L"DriveTray.ui.openFail",
                                    L"DriveTray.ui.closeFail",
                                    L"DriveTray.recent.loadFail",
                                    L"DriveTray.transMgr.uploadFailByNetworkException",
                                    L"DriveTray.transMgr.downloadFailByNetWorkException",
                                    L"DriveTray.transMgr.uploadFailByServerException",
                                    L"DriveTray.transMgr.downloadFailByServerException",
                                    L"DriveTray.transMgr.uploadFailByInsuffCloudStorage",
                                    L"DriveTray.transMgr.uploadFailByFilenameIllegal",
                                    L"DriveTray.transMgr.uploadFailByNotExist",
                                    L"DriveTray.transMgr.downloadFailByNotExist",
                                    L"DriveTray.transMgr.downloadFailByFileOccupy"};

TEST(EventTablesTest, NameEachEventAndNoOther) {
  ASSERT_EQ(std::size(kNames), 77u);
  for (int i = 0; i < 77; ++i) {
    EXPECT_EQ(EventName(static_cast<OperationBasicEventType>(i)), kNames[i]) << i;
  }
  const std::wstring_view kinds[] = {L"basic_opr", L"switch_module", L"file_translate", L"switch_page",
                                     L"special_opr"};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(ActionKind(static_cast<OperationActionType>(i)), kinds[i]) << i;
  }
  for (const int unknown : {-1, 77, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(EventName(static_cast<OperationBasicEventType>(unknown)), L"") << unknown;
    EXPECT_EQ(ActionKind(static_cast<OperationActionType>(unknown)), L"") << unknown;
  }
  EXPECT_EQ(ActionKind(static_cast<OperationActionType>(5)), L"");
}

TEST(EventTablesTest, HaveAnEnumeratorForEachEvent) {
  EXPECT_EQ(EventName(OperationBasicEventType::kDriveActionNewFolder), L"Drive.action.newFolder");
  EXPECT_EQ(EventName(OperationBasicEventType::kOtherApplicationCrash), L"Other.application.crash");
  EXPECT_EQ(EventName(OperationBasicEventType::kDriveTrayTransMgrDownloadFailByFileOccupy), kNames[76]);
}

TEST(FileInfoGroupsTest, JoinTenMapsAsTheyAreAndLeaveTheRestOut) {
  std::vector<OperationLogger::Fields> list(25, {{L"b", L"2"}, {L"a", L"\"\\"}});
  list[1] = {};
  const std::vector<std::wstring> groups = MakeFileInfoGroups(list);
  ASSERT_EQ(groups.size(), 2u);
  const std::wstring map = LR"({"a":""\","b":"2"})";
  std::wstring first = L"[" + map + L",{}";
  for (int i = 2; i < 10; ++i) {
    first += L"," + map;
  }
  EXPECT_EQ(groups[0], first + L"]");
  EXPECT_TRUE(MakeFileInfoGroups(std::vector<OperationLogger::Fields>(9)).empty());
}

}  // namespace
}  // namespace Drive::OperateLog
