// HeaderCheck.h - the two header sets of upload requests.
//
// Both sets begin with "Content-Type:application/json". The maintenance and the operation channel share one,
// with "Request-Id"; the UBA channel has its own, with "X-ReqID" and the token credential
//
//   Authorization: Base64("8:null:null:null:" + URL-encoded access token)
//
// A client's HTTP library adds headers of its own, such as Host; those are let pass.
#pragma once

#include <optional>
#include <string>

#include "collector/Request.h"

namespace Drive::Collection {

// The request id. Throws Refusal when a header is missing, doubled, misspelt, of another value or unknown.
std::string CheckHeaders(Channel channel, const Headers& headers);

// The access token, still URL-encoded, of a UBA request; nothing when there is no well-formed credential.
std::optional<std::string> TokenOf(const Headers& headers);

}  // namespace Drive::Collection
