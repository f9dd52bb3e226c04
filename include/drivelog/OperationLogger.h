// OperationLogger.h - entry point of the operation and UBA channels, and counting by file type.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "drivelog/Export.h"

namespace Drive::OperateLog {

class OperationLoggerManager;
class OperationLoggerTimer;
class UbaLoggerTimer;

// Which event happened; decides the name under which it is recorded: kDriveActionNewFile is
// "Drive.action.newFile". An event of any other value is dropped.
enum class OperationBasicEventType : int {
  kDriveMouseDownloadFile = 0,
  kDriveMouseReleaseSpace = 1,
  kDriveMouseMoveCloudDisk = 2,
  kDriveActionNewFile = 3,
  kDriveActionDeleteFile = 4,
  kDriveActionRenameFile = 5,
  kDriveActionDragFile = 6,
  kDriveActionEditFile = 7,
  kDriveActionNewFolder = 8,
  kDriveActionDeleteFolder = 9,
  kDriveActionRenameFolder = 10,
  kDriveActionDragFolder = 11,
  kDriveTrayUiShow = 12,
  kDriveTrayMenuRecentTab = 13,
  kDriveTrayRecentOpenFile = 14,
  kDriveTrayRecentOpenMore = 15,
  kDriveTrayRecentOpenMode = 16,
  kDriveTrayRecentOpenFolder = 17,
  kDriveTrayRecentRefresh = 18,
  kDriveTrayMenuTransMgrTab = 19,
  kDriveTrayTransMgrUpload = 20,
  kDriveTrayTransMgrPauseUploadTask = 21,
  kDriveTrayTransMgrContinueUploadTask = 22,
  kDriveTrayTransMgrStartAllUploadTask = 23,
  kDriveTrayTransMgrPauseAllUploadTask = 24,
  kDriveTrayTransMgrCancelUploadTask = 25,
  kDriveTrayTransMgrDeleteUploadTask = 26,
  kDriveTrayTransMgrClearUploadTask = 27,
  kDriveTrayTransMgrUploadFailList = 28,
  kDriveTrayTransMgrViewUploadFailFileDirectory = 29,
  kDriveTrayTransMgrDeletUploadFailFileRecord = 30,
  kDriveTrayTransMgrClearUploadFailFileRecord = 31,
  kDriveTrayTransMgrDownload = 32,
  kDriveTrayTransMgrPauseDownloadTask = 33,
  kDriveTrayTransMgrContinueDownloadTask = 34,
  kDriveTrayTransMgrStartAllDownloadTask = 35,
  kDriveTrayTransMgrPauseAllDownloadTask = 36,
  kDriveTrayTransMgrCancelAllDownloadTask = 37,
  kDriveTrayTransMgrDownloadFailList = 38,
  kDriveTrayTransMgrViewDownloadFailFileDirectory = 39,
  kDriveTrayTransMgrDeletDownloadFaillFileRecord = 40,
  kDriveTrayTransMgrClearDownloadFailFileRecord = 41,
  kDriveTrayButtonCloudDiskTray = 42,
  kDriveTrayButtonHelpAndService = 43,
  kDriveTrayButtonWebSite = 44,
  kDriveTrayButtonAccessSyncFolder = 45,
  kDriveTrayMoreUpgrade = 46,
  kDriveTrayMoreOpenClient = 47,
  kDriveTrayMorePauseSync = 48,
  kDriveTrayMoreContinueSync = 49,
  kDriveTrayMoreSettings = 50,
  kDriveTrayMoreProblemAndSuggestion = 51,
  kDriveStatusBarButtonLogin = 52,
  kDriveStatusBarButtonUpgrade = 53,
  kDriveStatusBarMoreHelpAndService = 54,
  kDriveStatusBarMoreRecentlyDelete = 55,
  kDriveStatusBarTransTaskViewDetail = 56,
  kDriveStatusBarTransTaskViewFailDetail = 57,
  kDriveStatusBarTransTaskContinueSync = 58,
  kDriveTrayButtonOpenSyncFolder = 59,
  kDriveButtonUploadFile = 60,
  kDriveMouseUpgrage = 61,
  kOtherApplicationCrash = 62,
  kDriveExplorerCreateDriveEntryFail = 63,
  kDriveComputerCreateDriveEntryFail = 64,
  kDriveTrayUiOpenFail = 65,
  kDriveTrayUiCloseFail = 66,
  kDriveTrayRecentLoadFail = 67,
  kDriveTrayTransMgrUploadFailByNetworkException = 68,
  kDriveTrayTransMgrDownloadFailByNetWorkException = 69,
  kDriveTrayTransMgrUploadFailByServerException = 70,
  kDriveTrayTransMgrDownloadFailByServerException = 71,
  kDriveTrayTransMgrUploadFailByInsuffCloudStorage = 72,
  kDriveTrayTransMgrUploadFailByFilenameIllegal = 73,
  kDriveTrayTransMgrUploadFailByNotExist = 74,
  kDriveTrayTransMgrDownloadFailByNotExist = 75,
  kDriveTrayTransMgrDownloadFailByFileOccupy = 76,
};

// A number of the host's choice that is recorded with the event; every value of int is fine.
enum class OperationType : int { kNone = 0 };

// What kind of action led to the event. For any other value the record says nothing about it.
enum class OperationActionType : int {
  kBasicOperation = 0,
  kSwitchModule = 1,
  kFileTranslate = 2,
  kSwitchPage = 3,
  kSpecialOperation = 4,
};

// Records what the user did and uploads it, to the operation collector and, where it is switched on, to the
// UBA collector.
//
// A host initialises BILogger first (database and settings), then calls StartLoggerTask, then, once the user
// has logged in, StartLogRptTask; OutputOperationLog whenever something happens; StopLoggerTask at its end.
//
// Way of a record: OutputOperationLog queues it; a save timer moves up to 100 records every 10 s into the
//   database; the upload timers send full batches at once and hold a partial one back for the maximum wait,
//   and delete what the server accepted. A record goes to the UBA table as well while the user is not logged
//   in, and afterwards while the UBA switch is 1.
// What is lost: everything that is queued or stored, for good, when the switch is turned off; the oldest
//   tenth of a table that reached the row cap; events of an unknown type; the last one to nine maps of a
//   list. What is still queued when the process ends is saved then, if the switch is on.
// Failures: no operation throws or reports a failure to its caller; CommLog has the messages.
// Thread-safety: every operation may be called from any thread; the ones that start, stop and switch are
//   meant for the host's control thread.
// Lifetime: one instance, created on first use; it saves its queue and ends its timers when the process
//   ends. Calls after that are harmless; what they record is lost.
class DRIVELOG_API OperationLogger {
 public:
  using Fields = std::map<std::wstring, std::wstring>;

  static OperationLogger& GetInstance();
  virtual ~OperationLogger();

  OperationLogger(const OperationLogger&) = delete;
  OperationLogger& operator=(const OperationLogger&) = delete;

  // Records one event. Cheap: builds the record and queues it.
  void OutputOperationLog(OperationBasicEventType event, OperationType type, OperationActionType action);

  // The same with extension data, see LogExntend; it is recorded as the text of a JSON object.
  void OutputOperationLog(OperationBasicEventType event, OperationType type, OperationActionType action,
                          Fields fields);

  // Records a list in groups of ten, one event a group, with the group's maps as text under "fileInfos". Keys
  // and values go into that text as they are, without any escaping. The last one to nine maps that do not
  // fill a group are not recorded.
  void OutputOperationLog(OperationBasicEventType event, OperationType type, OperationActionType action,
                          std::vector<Fields> list);

  // Switches both channels on or off. Off deletes what is stored, and what is being saved at this moment;
  // what is queued is discarded by the next save. A request that is on its way already is not called back.
  void SetOperationLogSwitchState(const bool& value);

  // Starts the save timer. Until then records wait in the queue.
  void StartLoggerTask();

  // Says that the user has logged in and starts the upload timers with the settings of this moment. Timers
  // that run already keep theirs. Empties what the switches forbid to keep: both tables when the operation
  // switch is off, the UBA table when the UBA switch is 0.
  void StartLogRptTask();

  // Stops the three timers. Each runs a last time first, so up to 100 more records are saved; a transfer in
  // flight is given a second to end, then aborted, and its rows stay. Returns when the threads have ended.
  void StopLoggerTask();

  // Deletes every stored record of the two channels.
  void DeleteOperationLogDB();

 private:
  friend struct OperationLoggerEnd;  // runs when the process ends

  OperationLogger();

  std::unique_ptr<OperationLoggerTimer> m_operationTimer;
  std::unique_ptr<UbaLoggerTimer> m_ubaTimer;
  std::unique_ptr<OperationLoggerManager> m_queue;
};

// Adds files to totals by category, so that one event can stand for many files.
//
// Of each file "suf" is read (suffix without the dot, in any case of its ASCII letters) and, when it belongs
// to one of the categories "Music", "Movie", "Text" and "Photo", "size" (decimal text). `totals` has an entry
// for each category met, with "count" and "size" in decimal; a missing or empty value there counts as 0.
//
// Throws std::out_of_range ("invalid map<K, T> key") for a file without "suf" or a counted file without
// "size", std::invalid_argument ("invalid stoi argument") for a text without a number, and std::out_of_range
// ("stoi argument out of range") for a number or a total outside 32 bits (2147483647); `totals` is then as it
// was before the call.
// Thread-safety: that of its arguments.
DRIVELOG_API void CountOperationLog(const std::vector<std::map<std::wstring, std::wstring>>& files,
                                    std::map<std::wstring, std::map<std::wstring, std::wstring>>& totals);

}  // namespace Drive::OperateLog
