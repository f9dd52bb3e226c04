// CollectorDecodeTest.cpp - decoding of captured requests from files.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "collector/DataFolder.h"
#include "collector/DecodeCommand.h"
#include "tests/CollectorRequests.h"
#include "tests/support/TempFolder.h"

namespace Drive::Testing {
namespace {

using namespace Collection;

class CollectorDecodeTest : public testing::Test {
 protected:
  void Write(const std::filesystem::path& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
  }

  // The headers as a tool may have noted them down: a request line, CR LF, with or without a blank.
  DecodeOrder Capture(const TestRequest& request) {
    std::string headers = "POST /path HTTP/1.1\r\n";
    for (const Header& header : request.headers) {
      headers += header.name + (headers.size() % 2 == 0 ? ":" : ": ") + header.value + "\r\n";
    }
    DecodeOrder order;
    order.channel = request.channel;
    order.headersFile = m_folder.Path() / "headers";
    order.bodyFile = m_folder.Path() / "body";
    order.dataFolder = m_folder.Path();
    Write(order.headersFile, headers + "\r\n");
    Write(order.bodyFile, request.Body());
    return order;
  }

  TempFolder m_folder;
  std::ostringstream m_out;
  std::ostringstream m_err;
};

TEST_F(CollectorDecodeTest, PrintsThePlainRequestOfEveryChannel) {
  const std::string key = DataFolder(m_folder.Path()).Rsa().PublicKeyHex();
  for (const Channel channel : kChannels) {
    TestRequest request = MakeRequest(channel, key);
    m_out.str("");
    ASSERT_EQ(0, RunDecode(Capture(request), m_out, m_err)) << NameOf(channel) << ": " << m_err.str();
    Json::Value plain;
    ASSERT_TRUE(Json::Reader().parse(m_out.str(), plain));
    if (channel == Channel::kOperation) {
      EXPECT_EQ(344u, plain["header"]["chifer"].asString().size());
      plain["header"].removeMember("chifer");
    }
    EXPECT_EQ(request.plain, plain) << NameOf(channel);
  }
}

TEST_F(CollectorDecodeTest, SaysWhyARequestWouldBeRefused) {
  TestRequest request = MakeRequest(Channel::kMaintenance, "");
  request.Header("Sdk-Ver") = "2";
  EXPECT_EQ(1, RunDecode(Capture(request), m_out, m_err));
  EXPECT_EQ("header Sdk-Ver has the wrong value \"2\"\n", m_err.str());
  EXPECT_EQ("", m_out.str());
}

TEST_F(CollectorDecodeTest, MakesNoKeyWhereThereIsNone) {
  DecodeOrder order = Capture(MakeRequest(Channel::kUba, ""));
  order.channel = Channel::kOperation;
  EXPECT_THROW(RunDecode(order, m_out, m_err), std::runtime_error);
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path() / kRsaKeyFile));
}

}  // namespace
}  // namespace Drive::Testing
