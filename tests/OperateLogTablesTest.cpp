// OperateLogTablesTest.cpp - the names of events and actions.
#include <gtest/gtest.h>

#include <sstream>

#include "operatelog/EventTables.h"

namespace Drive::OperateLog {
namespace {

const wchar_t* const kNames =
    LR"(
Drive.mouse.downloadFile Drive.mouse.releaseSpace Drive.mouse.moveCloudDisk Drive.action.newFile
Drive.action.deleteFile Drive.action.renameFile Drive.action.dragFile Drive.action.editFile
Drive.action.newFolder Drive.action.deleteFolder Drive.action.renameFolder Drive.action.dragFolder
DriveTray.ui.show DriveTray.menu.recentTab DriveTray.recent.openFile DriveTray.recent.openMore
DriveTray.recent.openMode DriveTray.recent.openFolder DriveTray.recent.refresh DriveTray.menu.transMgrTab
DriveTray.transMgr.upload DriveTray.transMgr.pauseUploadTask DriveTray.transMgr.continueUploadTask
DriveTray.transMgr.startAllUploadTask DriveTray.transMgr.pauseAllUploadTask
DriveTray.transMgr.cancelUploadTask DriveTray.transMgr.deleteUploadTask
DriveTray.transMgr.clearUploadTask DriveTray.transMgr.uploadFailList
DriveTray.transMgr.viewUploadFailFileDirectory DriveTray.transMgr.deletUploadFailFileRecord
DriveTray.transMgr.clearUploadFailFileRecord DriveTray.transMgr.download
DriveTray.transMgr.pauseDownloadTask DriveTray.transMgr.continueDownloadTask
DriveTray.transMgr.startAllDownloadTask DriveTray.transMgr.pauseAllDownloadTask
DriveTray.transMgr.cancelAllDownloadTask DriveTray.transMgr.downloadFailList
DriveTray.transMgr.viewDownloadFailFileDirectory DriveTray.transMgr.deletDownloadFaillFileRecord
DriveTray.transMgr.clearDownloadFailFileRecord DriveTray.button.cloudDiskTray
DriveTray.button.helpAndService DriveTray.button.webSite DriveTray.button.accessSyncFolder
DriveTray.more.upgrade DriveTray.more.openClient DriveTray.more.pauseSync DriveTray.more.continueSync
DriveTray.more.settings DriveTray.more.problemAndSuggestion DriveStatusBar.button.login
DriveStatusBar.button.upgrade DriveStatusBar.more.helpAndService DriveStatusBar.more.recentlyDelete
DriveStatusBar.transTask.viewDetail DriveStatusBar.transTask.viewFailDetail
DriveStatusBar.transTask.continueSync DriveTray.button.openSyncFolder Drive.button.uploadFile
Drive.mouse.upgrage Other.application.crash Drive.explorer.createDriveEntryFail
Drive.computer.createDriveEntryFail DriveTray.ui.openFail DriveTray.ui.closeFail
DriveTray.recent.loadFail DriveTray.transMgr.uploadFailByNetworkException
DriveTray.transMgr.downloadFailByNetWorkException DriveTray.transMgr.uploadFailByServerException
DriveTray.transMgr.downloadFailByServerException DriveTray.transMgr.uploadFailByInsuffCloudStorage
DriveTray.transMgr.uploadFailByFilenameIllegal DriveTray.transMgr.uploadFailByNotExist
DriveTray.transMgr.downloadFailByNotExist DriveTray.transMgr.downloadFailByFileOccupy)";
const wchar_t* const kKinds = L"basic_opr switch_module file_translate switch_page special_opr";

// Compares the table with `words`, one a value from 0 on; the values around them have none.
template <typename Enumeration>
void ExpectNames(std::wstring_view (*find)(Enumeration), const wchar_t* words, int expectedCount) {
  std::wistringstream stream(words);
  std::wstring word;
  int value = 0;
  while (stream >> word) {
    EXPECT_EQ(find(static_cast<Enumeration>(value++)), word);
  }
  EXPECT_EQ(value, expectedCount);
  for (const int unknown : {-1, value, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(find(static_cast<Enumeration>(unknown)), L"") << unknown;
  }
}

TEST(EventTablesTest, NameEachEventAndActionAndNoOther) {
  ExpectNames(EventName, kNames, 77);
  ExpectNames(ActionKind, kKinds, 5);
  EXPECT_EQ(EventName(OperationBasicEventType::kDriveTrayTransMgrDownloadFailByFileOccupy),
            L"DriveTray.transMgr.downloadFailByFileOccupy");
}

}  // namespace
}  // namespace Drive::OperateLog
