// ModelLogExntendTest.cpp - the fields of an operation event's extension data.
#include <gtest/gtest.h>

#include <set>

#include "drivelog/LogExntend.h"

namespace {

struct Setter {
  void (LogExntend::*set)(std::wstring value);
  const wchar_t* key;
};

const Setter kSetters[] = {{&LogExntend::SetApiName, L"apiName"},
                           {&LogExntend::SetAssetId, L"assetId"},
                           {&LogExntend::SetBatchType, L"Type"},
                           {&LogExntend::SetCardType, L"cardType"},
                           {&LogExntend::SetChangeType, L"ChangeType"},
                           {&LogExntend::SetCreateAlbumId, L"createAlbumId"},
                           {&LogExntend::SetCreateMediaId, L"createMediaId"},
                           {&LogExntend::SetDate, L"date"},
                           {&LogExntend::SetDays, L"days"},
                           {&LogExntend::SetDelAlbumId, L"delAlbumId"},
                           {&LogExntend::SetDelMediaId, L"delMediaId"},
                           {&LogExntend::SetDeleteCount, L"DeleteCount"},
                           {&LogExntend::SetDevice, L"device"},
                           {&LogExntend::SetDirect, L"direct"},
                           {&LogExntend::SetDirectoryID, L"DirectoryID"},
                           {&LogExntend::SetDisk, L"disk"},
                           {&LogExntend::SetDomain, L"domain"},
                           {&LogExntend::SetEntranceType, L"entranceType"},
                           {&LogExntend::SetError, L"error"},
                           {&LogExntend::SetErrorCode, L"errorCode"},
                           {&LogExntend::SetErrorReason, L"errorReason"},
                           {&LogExntend::SetFields, L"fields"},
                           {&LogExntend::SetFileId, L"fileId"},
                           {&LogExntend::SetFileName, L"fileName"},
                           {&LogExntend::SetFileNumber, L"fileNumber"},
                           {&LogExntend::SetFileSize, L"fileSize"},
                           {&LogExntend::SetFileSubType, L"fileSubType"},
                           {&LogExntend::SetFileType, L"fileType"},
                           {&LogExntend::SetFormat, L"format"},
                           {&LogExntend::SetHeight, L"height"},
                           {&LogExntend::SetId, L"id"},
                           {&LogExntend::SetIsDelCache, L"IsDelCache"},
                           {&LogExntend::SetIsFastUpload, L"IsFastUpload"},
                           {&LogExntend::SetIsfavorite, L"Isfavorite"},
                           {&LogExntend::SetKind, L"kind"},
                           {&LogExntend::SetLanguage, L"lang"},
                           {&LogExntend::SetLayoutValue, L"LayoutValue"},
                           {&LogExntend::SetLinkType, L"linkType"},
                           {&LogExntend::SetMode, L"mode"},
                           {&LogExntend::SetModule, L"module"},
                           {&LogExntend::SetNewId, L"Newid"},
                           {&LogExntend::SetNewcount, L"newcount"},
                           {&LogExntend::SetNum, L"operateType"},
                           {&LogExntend::SetOldId, L"Oldid"},
                           {&LogExntend::SetOperateType, L"operateType"},
                           {&LogExntend::SetOprType, L"oprType"},
                           {&LogExntend::SetOriginalcount, L"originalcount"},
                           {&LogExntend::SetPage, L"page"},
                           {&LogExntend::SetPageNum, L"pageNum"},
                           {&LogExntend::SetPicture, L"picture"},
                           {&LogExntend::SetPos, L"pos"},
                           {&LogExntend::SetPreLanguage, L"pre_lang"},
                           {&LogExntend::SetResidenceTime, L"residenceTime"},
                           {&LogExntend::SetResourceId, L"resource.id"},
                           {&LogExntend::SetResourceUserId, L"resource.userId"},
                           {&LogExntend::SetResult, L"result"},
                           {&LogExntend::SetShareId, L"shareId"},
                           {&LogExntend::SetSize, L"size"},
                           {&LogExntend::SetSoruce, L"soruce"},
                           {&LogExntend::SetStatus, L"status"},
                           {&LogExntend::SetSuf, L"suf"},
                           {&LogExntend::SetTaskId, L"taskId"},
                           {&LogExntend::SetTime, L"time"},
                           {&LogExntend::SetTotal, L"total"},
                           {&LogExntend::SetType, L"type"},
                           {&LogExntend::SetUpdateAlbumId, L"updateAlbumId"},
                           {&LogExntend::SetUpdateMediaId, L"updateMediaId"},
                           {&LogExntend::SetUsage, L"usage"},
                           {&LogExntend::SetVersionId, L"versionId"},
                           {&LogExntend::SetVideo, L"video"}};

TEST(LogExntendTest, StoresEachFieldUnderItsKey) {
  std::set<std::wstring> keys;
  for (const Setter& setter : kSetters) {
    LogExntend extension;
    (extension.*setter.set)(L"value");
    EXPECT_EQ(extension.GetExntend(), (LogExntend::Fields{{setter.key, L"value"}}));
    keys.insert(setter.key);
  }
  EXPECT_EQ(std::size(kSetters), 70u);
  EXPECT_EQ(keys.size(), 69u);  // SetNum and SetOperateType share theirs
}

TEST(LogExntendTest, KeepsTheFirstValueOfAKey) {
  LogExntend extension;
  extension.SetNum(L"1");
  extension.SetOperateType(L"2");
  extension.SetFileName(L"a");
  extension.SetFileName(L"b");
  LogExntend::Fields copy = extension.GetExntend();
  EXPECT_EQ(copy, (LogExntend::Fields{{L"fileName", L"a"}, {L"operateType", L"1"}}));
  copy.clear();
  EXPECT_EQ(extension.GetExntend().size(), 2u);
}

}  // namespace
