// ModelLogExntendTest.cpp - the fields of an operation event's extension data.
#include <gtest/gtest.h>

#include "drivelog/LogExntend.h"

namespace {

using X = LogExntend;

// clang-format off
const struct {
  void (X::*set)(std::wstring value);
  const wchar_t* key;
} kSetters[] = {
    {&X::SetApiName, L"apiName"}, {&X::SetAssetId, L"assetId"}, {&X::SetBatchType, L"Type"},
    {&X::SetCardType, L"cardType"}, {&X::SetChangeType, L"ChangeType"},
    {&X::SetCreateAlbumId, L"createAlbumId"}, {&X::SetCreateMediaId, L"createMediaId"},
    {&X::SetDate, L"date"}, {&X::SetDays, L"days"}, {&X::SetDelAlbumId, L"delAlbumId"},
    {&X::SetDelMediaId, L"delMediaId"}, {&X::SetDeleteCount, L"DeleteCount"}, {&X::SetDevice, L"device"},
    {&X::SetDirect, L"direct"}, {&X::SetDirectoryID, L"DirectoryID"}, {&X::SetDisk, L"disk"},
    {&X::SetDomain, L"domain"}, {&X::SetEntranceType, L"entranceType"}, {&X::SetError, L"error"},
    {&X::SetErrorCode, L"errorCode"}, {&X::SetErrorReason, L"errorReason"}, {&X::SetFields, L"fields"},
    {&X::SetFileId, L"fileId"}, {&X::SetFileName, L"fileName"}, {&X::SetFileNumber, L"fileNumber"},
    {&X::SetFileSize, L"fileSize"}, {&X::SetFileSubType, L"fileSubType"}, {&X::SetFileType, L"fileType"},
    {&X::SetFormat, L"format"}, {&X::SetHeight, L"height"}, {&X::SetId, L"id"},
    {&X::SetIsDelCache, L"IsDelCache"}, {&X::SetIsFastUpload, L"IsFastUpload"},
    {&X::SetIsfavorite, L"Isfavorite"}, {&X::SetKind, L"kind"}, {&X::SetLanguage, L"lang"},
    {&X::SetLayoutValue, L"LayoutValue"}, {&X::SetLinkType, L"linkType"}, {&X::SetMode, L"mode"},
    {&X::SetModule, L"module"}, {&X::SetNewId, L"Newid"}, {&X::SetNewcount, L"newcount"},
    {&X::SetNum, L"operateType"}, {&X::SetOldId, L"Oldid"}, {&X::SetOperateType, L"operateType"},
    {&X::SetOprType, L"oprType"}, {&X::SetOriginalcount, L"originalcount"}, {&X::SetPage, L"page"},
    {&X::SetPageNum, L"pageNum"}, {&X::SetPicture, L"picture"}, {&X::SetPos, L"pos"},
    {&X::SetPreLanguage, L"pre_lang"}, {&X::SetResidenceTime, L"residenceTime"},
    {&X::SetResourceId, L"resource.id"}, {&X::SetResourceUserId, L"resource.userId"},
    {&X::SetResult, L"result"}, {&X::SetShareId, L"shareId"}, {&X::SetSize, L"size"},
    {&X::SetSoruce, L"soruce"}, {&X::SetStatus, L"status"}, {&X::SetSuf, L"suf"},
    {&X::SetTaskId, L"taskId"}, {&X::SetTime, L"time"}, {&X::SetTotal, L"total"}, {&X::SetType, L"type"},
    {&X::SetUpdateAlbumId, L"updateAlbumId"}, {&X::SetUpdateMediaId, L"updateMediaId"},
    {&X::SetUsage, L"usage"}, {&X::SetVersionId, L"versionId"}, {&X::SetVideo, L"video"},
};
// clang-format on

TEST(LogExntendTest, StoresTheFirstValueOfEachFieldUnderItsKey) {
  ASSERT_EQ(std::size(kSetters), 70u);
  for (const auto& setter : kSetters) {
    LogExntend extension;
    (extension.*setter.set)(L"value");
    (extension.*setter.set)(L"later");
    EXPECT_EQ(extension.GetExntend(), (LogExntend::Fields{{setter.key, L"value"}}));
  }
}

}  // namespace
