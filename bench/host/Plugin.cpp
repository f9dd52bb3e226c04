// Plugin.cpp - starts all that a product starts, with an account that nobody signs in to: nothing to send.
#include "drivelog/BILogger.h"
#include "drivelog/OperationLogger.h"

extern "C" __attribute__((visibility("default"))) bool StartLogging() {
  auto& bi = Drive::Bilog::BILogger::GetInstance();
  if (!bi.InitDataBase(L"alice")) return false;
  Drive::Bilog::BiUbaDataType settings;
  settings.userId = L"alice";
  settings.ubaSwitch = 1;
  settings.pushLogMaxWaitTime = 60;
  bi.SetBiUbaDataPara(settings);
  bi.StartBILoggerTask();
  bi.StartBILogRptTask();
  auto& operation = Drive::OperateLog::OperationLogger::GetInstance();
  operation.StartLoggerTask();
  operation.StartLogRptTask();
  return true;
}
