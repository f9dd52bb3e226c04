// Options.cpp - reads the command line.
#include "examples/sync_folder/Options.h"

#include <json/json.h>

#include <CLI/CLI.hpp>
#include <fstream>

namespace SyncFolder {

namespace {

// The file that drivelog-collector writes when it listens: one JSON object.
void ReadCollectorReady(const std::string& file, Options& options) {
  std::ifstream in(file);
  Json::Value ready;
  std::string errors;
  if (!Json::parseFromStream(Json::CharReaderBuilder(), in, &ready, &errors) || !ready.isObject()) {
    throw CLI::ValidationError("--collector-ready", file + " holds no JSON object");
  }
  const auto text = [&](const char* name) {
    if (!ready[name].isString()) {
      throw CLI::ValidationError("--collector-ready", file + " lacks \"" + name + "\"");
    }
    return ready[name].asString();
  };
  options.baseUri = text("url");
  options.ubaUri = options.baseUri;
  options.certificate = std::filesystem::u8path(text("ca"));
  options.rsaKey = text("publicKey");
}

}  // namespace

ParsedOptions ParseOptions(int argc, char** argv) {
  Options options;
  std::string folder;
  std::string ready;
  std::string certificate;
  int deadline = static_cast<int>(options.deadline.count());

  CLI::App app(
      "Logs what is found in a folder, and with --watch what happens to it, as a drive client would.");
  app.add_option("FOLDER", folder, "folder to walk")->required();
  const auto readyOption =
      app.add_option("--collector-ready", ready, "file that drivelog-collector wrote with --ready-file")
          ->check(CLI::ExistingFile);
  const auto byHand = [&](const char* name, std::string& value, const char* description) {
    return app.add_option(name, value, description)->excludes(readyOption);
  };
  byHand("--base-uri", options.baseUri, "address of the maintenance and operation collector");
  byHand("--uba-uri", options.ubaUri, "address of the UBA collector");
  byHand("--ca", certificate, "certificate bundle (PEM) to trust")->check(CLI::ExistingFile);
  byHand("--rsa-key", options.rsaKey, "public key of the operation collector, hexadecimal DER");
  app.add_option("--user", options.user, "account identifier")->capture_default_str();
  app.add_option("--limit", options.limit, "things found that get an event of their own")
      ->capture_default_str()
      ->check(CLI::Range(1, 100000));
  app.add_option("--deadline", deadline, "seconds to wait for the deliveries at the end")
      ->capture_default_str()
      ->check(CLI::Range(1, 3600));
  app.add_flag("--watch", options.watch, "then follow the folder until interrupted");
  app.add_flag("--verbose", options.verbose, "show all of the library's diagnostic messages");

  try {
    app.parse(argc, argv);
    if (!ready.empty()) {
      ReadCollectorReady(ready, options);
    } else {
      options.certificate = std::filesystem::u8path(certificate);
    }
    if (options.baseUri.empty() || options.ubaUri.empty() || options.certificate.empty() ||
        options.rsaKey.empty()) {
      throw CLI::RequiredError("--collector-ready, or all of --base-uri, --uba-uri, --ca and --rsa-key,");
    }
  } catch (const CLI::ParseError& error) {
    // The parser's own codes would collide with those of the program.
    return {std::nullopt, app.exit(error) == 0 ? 0 : 2};
  }
  options.folder = std::filesystem::path(folder);
  options.deadline = std::chrono::seconds(deadline);
  return {options, 0};
}

}  // namespace SyncFolder
