// OperationEnvelope.h - the body of an operation-log request.
//
//   body    zlib( {"header": header, "event": event} )
//   event   hex( IV || AES-128-CBC( zlib( payload ) ) )            key and IV drawn for each request
//   header  model/EventJson.h; its "chifer" is RSA-OAEP( hex( AES key ) ) in Base64
//   IV      16 bytes, in clear
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

#include "client/common/EncryptHelper.h"
#include "drivelog/Events.h"

namespace Drive::OperateLog {

// What one request is enciphered with, 16 bytes each.
struct AesSecret {
  Bytes key;
  Bytes iv;
};

// Never the same twice; nothing when the system gives no random bytes.
std::optional<AesSecret> DrawAesSecret();

struct OperationEnvelope {
  enum class Status {
    kMade,
    kTooLarge,  // one of the two compressions passed the limit: to be made of fewer records
    kFailed     // `failure` says why
  };
  Status status = Status::kFailed;
  std::string body;
  std::string failure;
};

// `rsaPublicKey` is the hexadecimal text of a PKCS#1 DER key, 540 digits. Throws nothing but std::bad_alloc.
OperationEnvelope MakeOperationEnvelope(const Header& header, const Json::Value& payload,
                                        const std::string& rsaPublicKey);

}  // namespace Drive::OperateLog
