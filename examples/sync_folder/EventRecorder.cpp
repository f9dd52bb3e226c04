// EventRecorder.cpp - the events of the example, by every form that the library offers.
#include "examples/sync_folder/EventRecorder.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "client/common/EncryptHelper.h"
#include "client/log/TypeConvert.h"
#include "drivelog/BILogger.h"
#include "drivelog/LogExntend.h"
#include "drivelog/OperationLogger.h"
#include "examples/sync_folder/PathText.h"

namespace SyncFolder {

namespace fs = std::filesystem;
using Drive::EncryptHelper;
using Drive::TypeConvert;
using Drive::Bilog::BILogger;
using Drive::OperateLog::OperationActionType;
using Drive::OperateLog::OperationBasicEventType;
using Drive::OperateLog::OperationLogger;
using Drive::OperateLog::OperationType;

namespace {

// Codes of the example's BI events. Those above 16000 say by themselves that they concern a fixed disk.
enum BiCode : int {
  kWalkEnded = 16001,
  kFileFound = 16002,
  kFolderFound = 16003,
  kOtherFound = 16004,
  kUnreadable = 16005,
  kRestSummedUp = 16006,
  kFolderChanged = 16007,
};

constexpr OperationType kByWalk{1};
constexpr OperationType kByUser{2};
constexpr std::size_t kListGroup = 10;
constexpr std::size_t kCountChunk = 1000;

std::wstring MakeTraceId() {
  std::array<unsigned char, 16> bytes{};
  EncryptHelper::GetSecureRandom(bytes.data(), bytes.size());
  return TypeConvert::UTF8ToUnicode(EncryptHelper::CharToHexStr(bytes.data(), bytes.size()));
}

std::wstring Suffix(const fs::path& path) {
  const std::wstring withDot = WideText(path.extension());
  return withDot.empty() ? withDot : withDot.substr(1);
}

// An identifier that tells nothing about the name.
std::wstring FileId(const std::wstring& name) {
  return TypeConvert::UTF8ToUnicode(
      EncryptHelper::SHA256_Encode(TypeConvert::UnicodeToUTF8(name)).substr(0, 16));
}

// The unit in which files are counted by type: the library's totals end at 2^31 - 1, in bytes a small disk.
std::uintmax_t Kibibytes(std::uintmax_t bytes) { return bytes / 1024 + (bytes % 1024 != 0 ? 1 : 0); }

OperationBasicEventType EventOf(ChangeKind kind, bool isFolder) {
  using Event = OperationBasicEventType;
  switch (kind) {
    case ChangeKind::kCreated:
      return isFolder ? Event::kDriveActionNewFolder : Event::kDriveActionNewFile;
    case ChangeKind::kDeleted:
      return isFolder ? Event::kDriveActionDeleteFolder : Event::kDriveActionDeleteFile;
    case ChangeKind::kRenamed:
      return isFolder ? Event::kDriveActionRenameFolder : Event::kDriveActionRenameFile;
    case ChangeKind::kMoved:
      return isFolder ? Event::kDriveActionDragFolder : Event::kDriveActionDragFile;
    case ChangeKind::kEdited:
      break;
  }
  return Event::kDriveActionEditFile;
}

}  // namespace

std::map<int, std::string> UploadTypeNames() {
  return {{kWalkEnded, "SyncFolder.walkEnded"},        {kFileFound, "SyncFolder.fileFound"},
          {kFolderFound, "SyncFolder.folderFound"},    {kOtherFound, "SyncFolder.otherFound"},
          {kUnreadable, "SyncFolder.unreadable"},      {kRestSummedUp, "SyncFolder.restSummedUp"},
          {kFolderChanged, "SyncFolder.folderChanged"}};
}

EventRecorder::EventRecorder(fs::path root, std::size_t limit)
    : m_root(std::move(root)), m_limit(limit), m_traceId(MakeTraceId()) {}

void EventRecorder::WalkBegins() {
  BILogger::GetInstance().OutputBILog(L"SyncFolder.walkBegins", L"0", L"initial walk", L"", m_traceId);
  ++m_recorded.maintenance;
}

void EventRecorder::Found(const FoundEntry& entry) {
  ++m_found;
  if (entry.kind == EntryKind::kUnreadable) {
    ++m_unreadable;
  }
  if (m_found <= m_limit) {
    RecordFoundBiEvent(entry);
  } else {
    ++m_restCount;
    m_restBytes += entry.size;
  }
  const bool isFolder = entry.kind == EntryKind::kFolder;
  if (m_found <= (m_limit + 3) / 4 && (isFolder || entry.kind == EntryKind::kFile)) {
    RecordOperation({ChangeKind::kCreated, isFolder, entry.path, {}, entry.size}, kByWalk);
  }
  if (entry.kind == EntryKind::kFile) {
    CountFile(entry);
  }
}

void EventRecorder::WalkEnds(std::chrono::milliseconds duration) {
  if (m_restCount > 0) {
    LogExntend rest;
    rest.SetTotal(std::to_wstring(m_restCount));
    rest.SetSize(std::to_wstring(m_restBytes));
    BILogger::GetInstance().OutputBILog(kRestSummedUp, rest.GetExntend());
    ++m_recorded.maintenance;
  }
  BILogger::GetInstance().OutputBILog(kWalkEnded, L"0", L"initial walk",
                                      static_cast<double>(duration.count()));
  ++m_recorded.maintenance;
  RecordListedFiles();
  RecordCountsByType();
}

// One BI event, by the overload that fits what is known of the entry.
void EventRecorder::RecordFoundBiEvent(const FoundEntry& entry) {
  BILogger& log = BILogger::GetInstance();
  const std::wstring name = RelativeName(entry.path);
  switch (entry.kind) {
    case EntryKind::kFile: {
      // Information of this form is sent as fields of the record.
      const std::wstring info = L"{\"ResultInfo\":{\"file_id\":\"" + FileId(name) + L"\",\"file_size\":" +
                                std::to_wstring(entry.size) + L"}}";
      LogExntend extend;
      extend.SetFileName(name);
      extend.SetSuf(Suffix(entry.path));
      log.OutputBILog(kFileFound, L"0", info, extend.GetExntend());
      break;
    }
    case EntryKind::kFolder: {
      LogExntend extend;
      extend.SetFileName(name);
      log.OutputBILog(kFolderFound, extend.GetExntend());
      break;
    }
    case EntryKind::kLink:
    case EntryKind::kOther:
      log.OutputBILog(kOtherFound, entry.kind == EntryKind::kLink ? L"link" : L"special file", name);
      break;
    case EntryKind::kUnreadable:
      log.OutputBILog(kUnreadable, L"1", L"", L"cannot be read", name);
      break;
  }
  ++m_recorded.maintenance;
}

void EventRecorder::RecordOperation(const Change& change, OperationType type) {
  LogExntend extend;
  extend.SetFileName(RelativeName(change.path));
  extend.SetFileSize(std::to_wstring(change.size));
  if (!change.oldPath.empty()) {
    extend.SetOldId(FileId(RelativeName(change.oldPath)));
    extend.SetNewId(FileId(RelativeName(change.path)));
  }
  OperationLogger::GetInstance().OutputOperationLog(
      EventOf(change.kind, change.isFolder), type, OperationActionType::kBasicOperation, extend.GetExntend());
  ++m_recorded.operation;
}

void EventRecorder::CountFile(const FoundEntry& entry) {
  LogExntend counted;
  counted.SetSuf(Suffix(entry.path));
  counted.SetSize(std::to_wstring(Kibibytes(entry.size)));
  m_uncountedFiles.push_back(counted.GetExntend());
  if (m_uncountedFiles.size() == kCountChunk) {
    CountByType();
  }
  if (m_listedFiles.size() < m_limit) {
    // The list form escapes nothing, so only texts that need no escaping go into it.
    LogExntend listed;
    listed.SetFileId(FileId(RelativeName(entry.path)));
    listed.SetSize(std::to_wstring(entry.size));
    m_listedFiles.push_back(listed.GetExntend());
  }
}

// Chunk by chunk, since the totals go on from call to call and the files need not all be kept.
void EventRecorder::CountByType() {
  try {
    Drive::OperateLog::CountOperationLog(m_uncountedFiles, m_countsByType);
  } catch (const std::out_of_range&) {
    // More than 2 TiB of one type: the totals stay as they were.
    m_uncountable += m_uncountedFiles.size();
  }
  m_uncountedFiles.clear();
}

void EventRecorder::RecordListedFiles() {
  OperationLogger::GetInstance().OutputOperationLog(OperationBasicEventType::kDriveTrayTransMgrUpload,
                                                    kByWalk, OperationActionType::kFileTranslate,
                                                    m_listedFiles);
  m_recorded.listed = m_listedFiles.size();
  m_recorded.dropped = m_recorded.listed % kListGroup;
  m_recorded.operation += m_recorded.listed / kListGroup;
  m_listedFiles.clear();
}

void EventRecorder::RecordCountsByType() {
  CountByType();
  Fields summary;
  for (const auto& [type, totals] : m_countsByType) {
    for (const auto& [name, value] : totals) {
      std::wstring key = type;
      key.append(L".").append(name);
      summary[key] = value;
    }
  }
  if (m_uncountable > 0) {
    summary[L"uncounted"] = std::to_wstring(m_uncountable);
  }
  OperationLogger::GetInstance().OutputOperationLog(
      OperationBasicEventType::kDriveTrayTransMgrStartAllUploadTask, kByWalk,
      OperationActionType::kSpecialOperation, summary);
  ++m_recorded.operation;
}

void EventRecorder::Changed(const std::vector<Change>& changes) {
  const std::size_t recorded = std::min(changes.size(), m_limit);
  for (std::size_t i = 0; i < recorded; ++i) {
    LogExntend extend;
    extend.SetFileName(RelativeName(changes[i].path));
    BILogger::GetInstance().OutputBILog(kFolderChanged, extend.GetExntend());
    ++m_recorded.maintenance;
    RecordOperation(changes[i], kByUser);
  }
  if (recorded < changes.size()) {
    LogExntend rest;
    rest.SetTotal(std::to_wstring(changes.size() - recorded));
    BILogger::GetInstance().OutputBILog(kRestSummedUp, rest.GetExntend());
    ++m_recorded.maintenance;
  }
}

std::wstring EventRecorder::RelativeName(const fs::path& path) const {
  return WideText(path.lexically_relative(m_root));
}

}  // namespace SyncFolder
