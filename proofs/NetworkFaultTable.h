// NetworkFaultTable.h - what can go wrong between an upload and its collector, and how the upload ends then.
#pragma once

#include <random>
#include <set>
#include <string>
#include <vector>

#include "collector/Certificates.h"
#include "proofs/RawPeer.h"

namespace Drive::Testing {

struct NetworkFault {
  // Of libcurl's codes: the upload arrives, or each of its attempts is answered by a status that refuses it.
  static constexpr int kArrives = 0;
  static constexpr int kRefusedByStatus = -1;
  static constexpr int kTimeOut = 28;

  std::string name;
  std::set<int> ends;      // how the attempts may end
  RawPeer::Script script;  // of the peer; none: it does not listen
  bool isLarge = false;    // the request is so large that libcurl asks before it sends the body
  Collection::ServerCertificate certificate = Collection::ServerCertificate::kGood;
  int maxTlsVersion = 0;

  bool Hangs() const { return *ends.begin() == kTimeOut; }
};

// Of the peer in the collector's place. `elsewhere` is where its redirections lead to.
std::vector<NetworkFault> PeerFaults(std::mt19937_64& draw, const std::string& elsewhere);

// Of a proxy before the collector, which listens on `port`.
std::vector<NetworkFault> ProxyFaults(int port);

}  // namespace Drive::Testing
