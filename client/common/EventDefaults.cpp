// EventDefaults.cpp - what the records of an operation-log request say by default.
#include "client/common/SharedGlobals.h"
#include "drivelog/Events.h"

namespace Drive {

// No message digest: the transport protects the request, and the payload is enciphered.
Header::Header() : m_protocolVersion(L"1.0"), m_serviceTag(L"drivelog"), m_compressMode(L"zlib") {}

// A desktop has none of the mobile identifiers; its own is the client's.
Events_common::Events_common() : m_udid(g_deviceId) {}

Events::Events() : m_type(L"event") {}

}  // namespace Drive
