// LogExntend.h - builds the extension data of an operation event.
#pragma once

#include <map>
#include <string>

#include "drivelog/Export.h"

// Named fields of one operation event, to be passed to OperationLogger::OutputOperationLog.
//
//   LogExntend extension;
//   extension.SetFileName(L"report.docx");
//   extension.SetFileSize(L"1024");
//   logger.OutputOperationLog(event, type, action, extension.GetExntend());
//
// Surprises: the first value that is set for a field wins. SetNum and SetOperateType set the same field.
//            A few key texts differ from their setter's name; they belong to the server's vocabulary.
// Thread-safety: that of a plain value.
// Exceptions:    only for lack of memory.
class DRIVELOG_API LogExntend {
 public:
  using Fields = std::map<std::wstring, std::wstring>;

  LogExntend();
  LogExntend(const LogExntend& other);
  LogExntend& operator=(const LogExntend& other);
  ~LogExntend();

  // A copy of what was set.
  Fields GetExntend() const;

  // Each stores one field, unless it is stored already. UTF-16 on Windows, UTF-32 elsewhere.
  void SetApiName(std::wstring value);
  void SetAssetId(std::wstring value);
  void SetBatchType(std::wstring value);
  void SetCardType(std::wstring value);
  void SetChangeType(std::wstring value);
  void SetCreateAlbumId(std::wstring value);
  void SetCreateMediaId(std::wstring value);
  void SetDate(std::wstring value);
  void SetDays(std::wstring value);
  void SetDelAlbumId(std::wstring value);
  void SetDelMediaId(std::wstring value);
  void SetDeleteCount(std::wstring value);
  void SetDevice(std::wstring value);
  void SetDirect(std::wstring value);
  void SetDirectoryID(std::wstring value);
  void SetDisk(std::wstring value);
  void SetDomain(std::wstring value);
  void SetEntranceType(std::wstring value);
  void SetError(std::wstring value);
  void SetErrorCode(std::wstring value);
  void SetErrorReason(std::wstring value);
  void SetFields(std::wstring value);
  void SetFileId(std::wstring value);
  void SetFileName(std::wstring value);
  void SetFileNumber(std::wstring value);
  void SetFileSize(std::wstring value);
  void SetFileSubType(std::wstring value);
  void SetFileType(std::wstring value);
  void SetFormat(std::wstring value);
  void SetHeight(std::wstring value);
  void SetId(std::wstring value);
  void SetIsDelCache(std::wstring value);
  void SetIsFastUpload(std::wstring value);
  void SetIsfavorite(std::wstring value);
  void SetKind(std::wstring value);
  void SetLanguage(std::wstring value);
  void SetLayoutValue(std::wstring value);
  void SetLinkType(std::wstring value);
  void SetMode(std::wstring value);
  void SetModule(std::wstring value);
  void SetNewId(std::wstring value);
  void SetNewcount(std::wstring value);
  void SetNum(std::wstring value);
  void SetOldId(std::wstring value);
  void SetOperateType(std::wstring value);
  void SetOprType(std::wstring value);
  void SetOriginalcount(std::wstring value);
  void SetPage(std::wstring value);
  void SetPageNum(std::wstring value);
  void SetPicture(std::wstring value);
  void SetPos(std::wstring value);
  void SetPreLanguage(std::wstring value);
  void SetResidenceTime(std::wstring value);
  void SetResourceId(std::wstring value);
  void SetResourceUserId(std::wstring value);
  void SetResult(std::wstring value);
  void SetShareId(std::wstring value);
  void SetSize(std::wstring value);
  void SetSoruce(std::wstring value);
  void SetStatus(std::wstring value);
  void SetSuf(std::wstring value);
  void SetTaskId(std::wstring value);
  void SetTime(std::wstring value);
  void SetTotal(std::wstring value);
  void SetType(std::wstring value);
  void SetUpdateAlbumId(std::wstring value);
  void SetUpdateMediaId(std::wstring value);
  void SetUsage(std::wstring value);
  void SetVersionId(std::wstring value);
  void SetVideo(std::wstring value);

 private:
  void Insert(const wchar_t* key, std::wstring value);

  Fields m_fields;
};
