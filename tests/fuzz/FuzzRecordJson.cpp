// FuzzRecordJson.cpp - records with any text in Info and Extend, and any numbers, reach their collector.
//
// Input: channel, times, integers, then Info, Extend and the text of all other fields, each ended by 0xFF. In
// the texts 0xFE becomes a lone surrogate.
#include "client/log/TypeConvert.h"
#include "tests/fuzz/Fuzz.h"

namespace Drive::Testing {

namespace {

std::wstring AnyText(const std::string& bytes) {
  std::wstring text;
  for (std::size_t begin = 0; begin <= bytes.size();) {
    const std::size_t end = std::min(bytes.find('\xFE', begin), bytes.size());
    text += (begin == 0 ? L"" : std::wstring(1, static_cast<wchar_t>(0xD800 + begin % 0x800))) +
            TypeConvert::UTF8ToUnicode(bytes.substr(begin, end - begin));
    begin = end + 1;
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const Collection::Channel channel = Collection::kChannels[input.Byte() % Collection::kChannels.size()];
  Bilog::UserLog record;
  record.set_UseTime(input.Number<double>());
  record.set_StartTime(input.Number<double>());
  record.set_Logversion(input.Number<std::int32_t>());
  record.set_TraceEndFlag(input.Number<std::int32_t>());
  record.set_ResidenceTime(input.Number<std::int32_t>());
  record.set_Info(AnyText(input.Part()));
  record.set_Extend(AnyText(input.Part()));
  const std::wstring other = AnyText(input.Part());
  using Log = Bilog::UserLog;
  for (const auto set : {&Log::set_Time, &Log::set_Action, &Log::set_UserId, &Log::set_DevId, &Log::set_Code,
                         &Log::set_TraceId, &Log::set_Model, &Log::set_Romversion, &Log::set_Appversion,
                         &Log::set_Reqsize, &Log::set_Rspsize, &Log::set_CurModule, &Log::set_Actiontype,
                         &Log::set_NextModule, &Log::set_OprType}) {
    (record.*set)(other);
  }
  PromiseDelivery(channel, {record, Bilog::UserLog()});
  return 0;
}

}  // namespace Drive::Testing
