// CommandLine.cpp - the options of drivelog-collector.
#include "collector/CommandLine.h"

#include <CLI/CLI.hpp>
#include <map>
#include <stdexcept>
#include <vector>

#include "collector/JsonCheck.h"

namespace Drive::Collection {

namespace {

const std::map<std::string, ServerCertificate>& CertificateNames() {
  static const auto& names =
      *new std::map<std::string, ServerCertificate>{{"good", ServerCertificate::kGood},
                                                    {"expired", ServerCertificate::kExpired},
                                                    {"wrong-host", ServerCertificate::kWrongHost},
                                                    {"foreign", ServerCertificate::kForeignAuthority}};
  return names;
}

std::map<std::string, Channel> ChannelNames() {
  std::map<std::string, Channel> names;
  for (const Channel channel : kChannels) {
    names[NameOf(channel)] = channel;
  }
  return names;
}

Fault FaultFromText(const std::string& text) {
  try {
    return FaultFromJson(ParseObject(text, "the fault"));
  } catch (const std::exception& error) {
    throw CLI::ValidationError("--fault", error.what());
  }
}

}  // namespace

CommandLine ParseCommandLine(int argc, char** argv) {
  CommandLine line;
  DecodeOrder decode;
  std::string dataFolder;
  std::string readyFile;
  std::string headersFile;
  std::string bodyFile;
  std::string rsaKeyFile;
  std::vector<std::string> faults;
  bool anyDeflate = false;

  CLI::App app("Takes the uploads of drivelog clients over HTTPS, checks them and keeps them.");
  app.add_option("--data-dir", dataFolder, "folder of keys, certificates and requests; made when missing");
  app.add_option("--database", line.options.database,
                 "file of the requests, or :memory: (default: in the data folder)");
  app.add_option("--host", line.options.host, "address to listen on")->capture_default_str();
  app.add_option("--port", line.options.port, "port to listen on, 0 for a free one")
      ->capture_default_str()
      ->check(CLI::Range(0, 65535));
  app.add_option("--ready-file", readyFile, "file to write url, ca and publicKey to, as JSON");
  app.add_option("--expect-token", line.options.expectedToken,
                 "access token (URL-encoded) without which UBA uploads are refused");
  app.add_option("--certificate", line.options.certificate, "good, expired, wrong-host or foreign")
      ->transform(CLI::CheckedTransformer(CertificateNames()).description(""));
  app.add_option("--fault", faults, R"(answer wrongly, such as {"status":500,"count":3}; may be repeated)");
  app.add_flag("--any-deflate", anyDeflate, "take bodies that another deflate library than zlib compressed");

  CLI::App* decodeCommand =
      app.add_subcommand("decode", "prints what one request says, or why it would be refused");
  decodeCommand->fallthrough();  // --data-dir and --any-deflate
  decodeCommand->add_option("--channel", decode.channel, "maintenance, operation or uba")
      ->required()
      ->transform(CLI::CheckedTransformer(ChannelNames()).description(""));
  decodeCommand->add_option("--headers", headersFile, "file of the HTTP headers, one a line")->required();
  decodeCommand->add_option("--body", bodyFile, "file of the body as sent")->required();
  decodeCommand->add_option("--rsa-key", rsaKeyFile, "private key (PEM) of the operation channel");

  try {
    app.parse(argc, argv);
    for (const std::string& text : faults) {
      line.options.faults.push_back(FaultFromText(text));
    }
    if (dataFolder.empty() && !decodeCommand->parsed()) {
      throw CLI::RequiredError("--data-dir");
    }
  } catch (const CLI::ParseError& error) {
    line.exitCode = app.exit(error);
    return line;
  }
  line.options.dataFolder = std::filesystem::u8path(dataFolder);
  line.options.deflateRule = anyDeflate ? DeflateRule::kAny : DeflateRule::kAsZlibMakes;
  line.readyFile = std::filesystem::u8path(readyFile);
  if (decodeCommand->parsed()) {
    decode.headersFile = std::filesystem::u8path(headersFile);
    decode.bodyFile = std::filesystem::u8path(bodyFile);
    decode.rsaKeyFile = std::filesystem::u8path(rsaKeyFile);
    decode.dataFolder = line.options.dataFolder;
    decode.deflateRule = line.options.deflateRule;
    line.decode = decode;
  }
  return line;
}

}  // namespace Drive::Collection
