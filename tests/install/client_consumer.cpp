// client_consumer.cpp - a host that uses the client's installed headers.
#include "client/common/SharedGlobals.h"
#include "client/log/TypeConvert.h"

int main() {
  Drive::g_certPath.Set(Drive::TypeConvert::UTF8ToUnicode("bundle.pem"));
  return Drive::g_certPath.Get() == L"bundle.pem" ? 0 : 1;
}
