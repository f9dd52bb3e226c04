// LogExntend.cpp - the fields of an operation event's extension data, and the keys under which they are sent.
#include "drivelog/LogExntend.h"

#include <utility>

LogExntend::LogExntend() = default;
LogExntend::LogExntend(const LogExntend& other) = default;
LogExntend& LogExntend::operator=(const LogExntend& other) = default;
LogExntend::~LogExntend() = default;

LogExntend::Fields LogExntend::GetExntend() const { return m_fields; }

// Keeps an entry that is there already.
void LogExntend::Insert(const wchar_t* key, std::wstring value) { m_fields.emplace(key, std::move(value)); }

void LogExntend::SetApiName(std::wstring value) { Insert(L"apiName", std::move(value)); }
void LogExntend::SetAssetId(std::wstring value) { Insert(L"assetId", std::move(value)); }
void LogExntend::SetBatchType(std::wstring value) { Insert(L"Type", std::move(value)); }
void LogExntend::SetCardType(std::wstring value) { Insert(L"cardType", std::move(value)); }
void LogExntend::SetChangeType(std::wstring value) { Insert(L"ChangeType", std::move(value)); }
void LogExntend::SetCreateAlbumId(std::wstring value) { Insert(L"createAlbumId", std::move(value)); }
void LogExntend::SetCreateMediaId(std::wstring value) { Insert(L"createMediaId", std::move(value)); }
void LogExntend::SetDate(std::wstring value) { Insert(L"date", std::move(value)); }
void LogExntend::SetDays(std::wstring value) { Insert(L"days", std::move(value)); }
void LogExntend::SetDelAlbumId(std::wstring value) { Insert(L"delAlbumId", std::move(value)); }
void LogExntend::SetDelMediaId(std::wstring value) { Insert(L"delMediaId", std::move(value)); }
void LogExntend::SetDeleteCount(std::wstring value) { Insert(L"DeleteCount", std::move(value)); }
void LogExntend::SetDevice(std::wstring value) { Insert(L"device", std::move(value)); }
void LogExntend::SetDirect(std::wstring value) { Insert(L"direct", std::move(value)); }
void LogExntend::SetDirectoryID(std::wstring value) { Insert(L"DirectoryID", std::move(value)); }
void LogExntend::SetDisk(std::wstring value) { Insert(L"disk", std::move(value)); }
void LogExntend::SetDomain(std::wstring value) { Insert(L"domain", std::move(value)); }
void LogExntend::SetEntranceType(std::wstring value) { Insert(L"entranceType", std::move(value)); }
void LogExntend::SetError(std::wstring value) { Insert(L"error", std::move(value)); }
void LogExntend::SetErrorCode(std::wstring value) { Insert(L"errorCode", std::move(value)); }
void LogExntend::SetErrorReason(std::wstring value) { Insert(L"errorReason", std::move(value)); }
void LogExntend::SetFields(std::wstring value) { Insert(L"fields", std::move(value)); }
void LogExntend::SetFileId(std::wstring value) { Insert(L"fileId", std::move(value)); }
void LogExntend::SetFileName(std::wstring value) { Insert(L"fileName", std::move(value)); }
void LogExntend::SetFileNumber(std::wstring value) { Insert(L"fileNumber", std::move(value)); }
void LogExntend::SetFileSize(std::wstring value) { Insert(L"fileSize", std::move(value)); }
void LogExntend::SetFileSubType(std::wstring value) { Insert(L"fileSubType", std::move(value)); }
void LogExntend::SetFileType(std::wstring value) { Insert(L"fileType", std::move(value)); }
void LogExntend::SetFormat(std::wstring value) { Insert(L"format", std::move(value)); }
void LogExntend::SetHeight(std::wstring value) { Insert(L"height", std::move(value)); }
void LogExntend::SetId(std::wstring value) { Insert(L"id", std::move(value)); }
void LogExntend::SetIsDelCache(std::wstring value) { Insert(L"IsDelCache", std::move(value)); }
void LogExntend::SetIsFastUpload(std::wstring value) { Insert(L"IsFastUpload", std::move(value)); }
void LogExntend::SetIsfavorite(std::wstring value) { Insert(L"Isfavorite", std::move(value)); }
void LogExntend::SetKind(std::wstring value) { Insert(L"kind", std::move(value)); }
void LogExntend::SetLanguage(std::wstring value) { Insert(L"lang", std::move(value)); }
void LogExntend::SetLayoutValue(std::wstring value) { Insert(L"LayoutValue", std::move(value)); }
void LogExntend::SetLinkType(std::wstring value) { Insert(L"linkType", std::move(value)); }
void LogExntend::SetMode(std::wstring value) { Insert(L"mode", std::move(value)); }
void LogExntend::SetModule(std::wstring value) { Insert(L"module", std::move(value)); }
void LogExntend::SetNewId(std::wstring value) { Insert(L"Newid", std::move(value)); }
void LogExntend::SetNewcount(std::wstring value) { Insert(L"newcount", std::move(value)); }
// The key of SetOperateType; this is meant.
void LogExntend::SetNum(std::wstring value) { Insert(L"operateType", std::move(value)); }
void LogExntend::SetOldId(std::wstring value) { Insert(L"Oldid", std::move(value)); }
void LogExntend::SetOperateType(std::wstring value) { Insert(L"operateType", std::move(value)); }
void LogExntend::SetOprType(std::wstring value) { Insert(L"oprType", std::move(value)); }
void LogExntend::SetOriginalcount(std::wstring value) { Insert(L"originalcount", std::move(value)); }
void LogExntend::SetPage(std::wstring value) { Insert(L"page", std::move(value)); }
void LogExntend::SetPageNum(std::wstring value) { Insert(L"pageNum", std::move(value)); }
void LogExntend::SetPicture(std::wstring value) { Insert(L"picture", std::move(value)); }
void LogExntend::SetPos(std::wstring value) { Insert(L"pos", std::move(value)); }
void LogExntend::SetPreLanguage(std::wstring value) { Insert(L"pre_lang", std::move(value)); }
void LogExntend::SetResidenceTime(std::wstring value) { Insert(L"residenceTime", std::move(value)); }
void LogExntend::SetResourceId(std::wstring value) { Insert(L"resource.id", std::move(value)); }
void LogExntend::SetResourceUserId(std::wstring value) { Insert(L"resource.userId", std::move(value)); }
void LogExntend::SetResult(std::wstring value) { Insert(L"result", std::move(value)); }
void LogExntend::SetShareId(std::wstring value) { Insert(L"shareId", std::move(value)); }
void LogExntend::SetSize(std::wstring value) { Insert(L"size", std::move(value)); }
void LogExntend::SetSoruce(std::wstring value) { Insert(L"soruce", std::move(value)); }
void LogExntend::SetStatus(std::wstring value) { Insert(L"status", std::move(value)); }
void LogExntend::SetSuf(std::wstring value) { Insert(L"suf", std::move(value)); }
void LogExntend::SetTaskId(std::wstring value) { Insert(L"taskId", std::move(value)); }
void LogExntend::SetTime(std::wstring value) { Insert(L"time", std::move(value)); }
void LogExntend::SetTotal(std::wstring value) { Insert(L"total", std::move(value)); }
void LogExntend::SetType(std::wstring value) { Insert(L"type", std::move(value)); }
void LogExntend::SetUpdateAlbumId(std::wstring value) { Insert(L"updateAlbumId", std::move(value)); }
void LogExntend::SetUpdateMediaId(std::wstring value) { Insert(L"updateMediaId", std::move(value)); }
void LogExntend::SetUsage(std::wstring value) { Insert(L"usage", std::move(value)); }
void LogExntend::SetVersionId(std::wstring value) { Insert(L"versionId", std::move(value)); }
void LogExntend::SetVideo(std::wstring value) { Insert(L"video", std::move(value)); }
