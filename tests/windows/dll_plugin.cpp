// dll_plugin.cpp - a plug-in that logs: loading it loads the library, unloading it lets go of the library.
#include "drivelog/BILogger.h"

extern "C" __declspec(dllexport) void StartLogging() {
  auto& logger = Drive::Bilog::BILogger::GetInstance();
  for (int i = 0; i < 500; ++i) {
    logger.OutputBILog(16001, L"info", L"extend");
  }
  logger.StartBILoggerTask();  // and no upload: OpenSSL, once it is in use, keeps its library loaded as well
}
