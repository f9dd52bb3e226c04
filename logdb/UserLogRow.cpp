// UserLogRow.cpp - the tables' columns, and moving records in and out of them.
//
// Both tables have the columns of a record in its own order:
//
//    0  Id              assigned by the database       11-15  Model .. Rspsize          text
//    1-8   Time .. TraceId           text              16-17  Logversion, TraceEndFlag  integer
//    9-10  UseTime, StartTime        double            18-20  CurModule .. NextModule   text
//   21  ResidenceTime   integer, in a column declared DOUBLE: an affinity only, and meant
//   22  OprType         text                           23  IsMaintenanceLog  integer, the channel
//
// The insert statement leaves Id out, so its parameters have the columns' numbers.
#include "logdb/UserLogRow.h"

#include "client/log/TypeConvert.h"
#include "model/UserLogFields.h"

namespace Drive::SQLiteDB {
namespace {

using Bilog::UserLog;
using Fields = Bilog::UserLogFields;

struct TextColumn {
  int number;
  Fields::Text field;
};

constexpr TextColumn kTextColumns[] = {
    {1, Fields::kTime},     {2, Fields::kAction},      {3, Fields::kUserId},      {4, Fields::kDevId},
    {5, Fields::kCode},     {6, Fields::kInfo},        {7, Fields::kExtend},      {8, Fields::kTraceId},
    {11, Fields::kModel},   {12, Fields::kRomversion}, {13, Fields::kAppversion}, {14, Fields::kReqsize},
    {15, Fields::kRspsize}, {18, Fields::kCurModule},  {19, Fields::kActiontype}, {20, Fields::kNextModule},
    {22, Fields::kOprType},
};

constexpr char16_t kByteOrderMark = 0xFEFF;

// SQLite takes such a first character for a mark of the byte order, and off the text. It takes one only.
bool StartsLikeByteOrderMark(const std::u16string& text) {
  return !text.empty() && (text[0] == kByteOrderMark || text[0] == 0xFFFE);
}

std::wstring ReadText(sqlite3_stmt* select, int column) {
  // A text ends at its first NUL, as it does on its way in.
  const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(select, column));
  if (text == nullptr) return {};
  return TypeConvert::UTF16ToUnicode(text, std::char_traits<char16_t>::length(text));
}

}  // namespace

std::string CreateTableSql(const char* table) {
  return std::string("CREATE TABLE IF NOT EXISTS ") + table +
         " (Id   INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL,Time       VARCHAR,Action    VARCHAR,"
         "UserId    VARCHAR,DevId      VARCHAR,Code  VARCHAR,Info  VARCHAR,Extend  VARCHAR,TraceId  VARCHAR,"
         "UseTime    DOUBLE,StartTime   DOUBLE,Model  VARCHAR,Romversion  VARCHAR,Appversion  VARCHAR,"
         "Reqsize  VARCHAR,Rspsize  VARCHAR,Logversion  INTEGER,TraceEndFlag  INTEGER,CurModule  VARCHAR,"
         "Actiontype  VARCHAR,NextModule  VARCHAR,ResidenceTime    DOUBLE,OprType  VARCHAR,"
         "IsMaintenanceLog  INTEGER NOT NULL);";
}

std::string InsertSql(const char* table) {
  return std::string("INSERT INTO ") + table +
         " (Time,Action,UserId, DevId, Code, Info,Extend, TraceId, UseTime,StartTime,Model,Romversion,"
         "Appversion,Reqsize,Rspsize,Logversion,TraceEndFlag,CurModule, Actiontype,NextModule,ResidenceTime,"
         "OprType,IsMaintenanceLog) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
}

int RowBinder::Bind(sqlite3_stmt* insert, const UserLog& record) {
  std::size_t next = 0;
  for (const TextColumn& column : kTextColumns) {
    std::u16string& text = m_texts[next++];
    text = TypeConvert::UnicodeToUTF16(record.*column.field);
    if (StartsLikeByteOrderMark(text)) text.insert(text.begin(), kByteOrderMark);
    const int code = sqlite3_bind_text16(insert, column.number, text.c_str(), -1, SQLITE_STATIC);
    if (code != SQLITE_OK) return code;
  }
  // A number always fits.
  sqlite3_bind_double(insert, 9, record.get_UseTime());
  sqlite3_bind_double(insert, 10, record.get_StartTime());
  sqlite3_bind_int(insert, 16, record.get_Logversion());
  sqlite3_bind_int(insert, 17, record.get_TraceEndFlag());
  sqlite3_bind_int64(insert, 21, record.get_ResidenceTime());
  sqlite3_bind_int(insert, 23, record.get_IsMaintenanceLog());
  return SQLITE_OK;
}

std::size_t MemoryBytes(const UserLog& record) {
  std::size_t bytes = sizeof(UserLog);
  for (const TextColumn& column : kTextColumns) bytes += (record.*column.field).size() * sizeof(wchar_t);
  return bytes;
}

UserLog ReadRow(sqlite3_stmt* select) {
  UserLog record;
  record.set_Id(sqlite3_column_int(select, 0));
  for (const TextColumn& column : kTextColumns) record.*column.field = ReadText(select, column.number);
  record.set_UseTime(sqlite3_column_double(select, 9));
  record.set_StartTime(sqlite3_column_double(select, 10));
  record.set_Logversion(sqlite3_column_int(select, 16));
  record.set_TraceEndFlag(sqlite3_column_int(select, 17));
  record.set_ResidenceTime(static_cast<Bilog::Long>(sqlite3_column_int64(select, 21)));
  record.set_IsMaintenanceLog(sqlite3_column_int(select, 23));
  return record;
}

}  // namespace Drive::SQLiteDB
