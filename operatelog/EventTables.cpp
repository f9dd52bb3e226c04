// EventTables.cpp - the vocabulary of the operation collector; its spellings are kept as they are.
#include "operatelog/EventTables.h"

#include <array>
#include <cstddef>

namespace Drive::OperateLog {

namespace {

// In the order of OperationBasicEventType. Surface, element, action.
constexpr std::array<std::wstring_view, 77> kEventNames = {
    L"Drive.mouse.downloadFile",
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
    L"DriveTray.transMgr.downloadFailByFileOccupy",
};

// In the order of OperationActionType.
constexpr std::array<std::wstring_view, 5> kActionKinds = {L"basic_opr", L"switch_module", L"file_translate",
                                                           L"switch_page", L"special_opr"};

template <std::size_t Size>
std::wstring_view Find(const std::array<std::wstring_view, Size>& table, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < Size ? table[static_cast<std::size_t>(index)]
                                                              : std::wstring_view();
}

}  // namespace

std::wstring_view EventName(OperationBasicEventType event) {
  return Find(kEventNames, static_cast<int>(event));
}

std::wstring_view ActionKind(OperationActionType action) {
  return Find(kActionKinds, static_cast<int>(action));
}

}  // namespace Drive::OperateLog
