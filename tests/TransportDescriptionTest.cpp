// TransportDescriptionTest.cpp - header lines and system names.
#include <gtest/gtest.h>

#include "client/common/SharedGlobals.h"
#include "model/LogSettings.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeSystem.h"
#include "transport/DeviceDescription.h"
#include "transport/RequestHeaders.h"

namespace Drive::Bilog {
namespace {

using Lines = std::vector<std::string>;

TEST(HeadersTest, AreTheseLinesInThisOrder) {
  const Testing::FakeSystem system;
  Platform::InstallSystem(&system);
  const Testing::CapturedLog log;
  g_pcModel = "Model\r\n";
  g_pcVersion = L"1.2\n.3";
  g_userAgent = L"Agént/";
  LogSettings::GetInstance().SetUserId(L"usér\t1");
  // Long enough for line breaks, had the Base64 text any: 8:null:null:null:a%20b%2F%C3%A9%2Bxxx...
  LogSettings::GetInstance().SetAccessToken(L"a b/é+" + std::wstring(30, L'x'));
  EXPECT_EQ(CreateReqHeader(std::string("id\r\n X-Forged: 1\0\x7F", 18)),
            (Lines{"Content-Type:application/json", "Request-Id:id X-Forged: 1", "App-Ver:1.1.1.1",
                   "App-Id:com.talvik.cloud.pc", "Sdk-Name:OrvellePC", "Sdk-Ver:1", "Device-Type:OrvellePC",
                   "x-zq-client-mode:frontend", "x-zq-os-brand:Windows"}));
  EXPECT_EQ(CreateUbaReqHeader("id", "udid"),
            (Lines{"Content-Type:application/json", "Content-Encoding:gzip", "X-ReqID:id",
                   "X-AppID:com.talvik.cloud.pc", "X-Model:Model", "X-AppVer:1.2.3", "X-UDID:udid",
                   "X-AccountID:us\xC3\xA9r1", "User-Agent:Ag\xC3\xA9nt/1.2.3",
                   "X-RomVer:Microsoft Windows NT 10.0.22631.0", "X-Lang:zh_CN", "X-DeliveryPlace:CN",
                   "Authorization:"
                   "ODpudWxsOm51bGw6bnVsbDphJTIwYiUyRiVDMyVBOSUyQnh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eHh4eA==",
                   "X-zq-auth-version:1", "x-zq-client-mode:frontend", "x-zq-os-brand:Windows"}));
  const std::string location = "Drive::Bilog::PushLogRequest::CreateUbaReqHeader";
  EXPECT_TRUE(log.Has({1, 186, location, "g_pcModel = Model\r\n"}));
  EXPECT_TRUE(log.Has({1, 188, location, "g_pcVersion = 1.2\n.3"}));
  Platform::InstallSystem(nullptr);
  LogSettings::GetInstance().Reset();
}

TEST(OsNameTest, NamesEverySystemThatIsKnown) {
  const struct {
    std::uint32_t platformId, major, minor;
    const wchar_t* workstation;  // nullptr: not known
    const wchar_t* server;
  } cases[] = {
      {2, 4, 0, L"NT 4.0", L"NT 4.0"},
      {1, 4, 0, L"95", L"95"},
      {3, 4, 0, nullptr, nullptr},
      {1, 4, 10, L"98", L"98"},
      {1, 4, 90, L"Me", L"Me"},
      {2, 5, 0, L"2000", L"2000"},
      {2, 5, 1, L"XP", L"XP"},
      {2, 5, 2, L"XP Professional x64 Edition", L"Server 2003"},
      {2, 6, 0, L"Vista", L"Server 2008"},
      {2, 6, 1, L"7", L"Server 2008 R2"},
      {2, 6, 2, L"8", L"Server 2012"},
      {2, 6, 3, L"8.1", L"Server 2012 R2"},
      {2, 6, 4, nullptr, nullptr},
      {2, 10, 0, L"NT", L"Server 2016"},
  };
  for (const auto& row : cases) {
    for (const bool isWorkstation : {true, false}) {
      const wchar_t* const name = isWorkstation ? row.workstation : row.server;
      EXPECT_EQ(OsVersionName({row.platformId, row.major, row.minor, 20348, 3, isWorkstation},
                              Platform::kArchitectureX64, [] { return false; }),
                name == nullptr
                    ? L"Unknow Platform"
                    : std::wstring(L"Microsoft Windows ") + name + L" " + std::to_wstring(row.major) + L"." +
                          std::to_wstring(row.minor) + L".20348.3");
    }
  }
  // Server 2003: the metric is asked twice.
  for (const auto& [first, second, name] :
       {std::tuple{true, true, L"Microsoft Windows Server 2003 R2 5.2.3790.2"},
        std::tuple{false, true, L"Unknow Platform"}}) {
    const auto isServerR2 = [asked = 0, a = first, b = second]() mutable { return asked++ == 0 ? a : b; };
    EXPECT_EQ(OsVersionName({2, 5, 2, 3790, 2, true}, Platform::kArchitectureX86, isServerR2), name);
  }
}

}  // namespace
}  // namespace Drive::Bilog
