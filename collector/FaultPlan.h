// FaultPlan.h - which of the coming requests are to be answered wrongly, and how.
#pragma once

#include <json/json.h>

#include <chrono>
#include <list>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "collector/Request.h"

namespace Drive::Collection {

struct Fault {
  std::optional<Channel> channel;      // all channels when not set
  int status = 0;                      // answered without a look at the request; 0: it is treated as ever
  std::string body;                    // of that answer
  std::chrono::milliseconds delay{0};  // before anything else is done
  bool drop = false;                   // the connection ends without an answer
  int count = 1;                       // so many requests; 0: all, until the faults are cleared
  double share = 1.0;                  // chance of each request to be hit
  unsigned seed = 1;                   // of the draws for `share`
  // Hits, whatever `count` says, until a UBA request carries another access token than the one before it;
  // unless set otherwise the answer is the refusal by which a client knows that its token has expired.
  bool untilNewToken = false;
};

// As objects of the HTTP API and the command line:
//   {"channel": "uba", "status": 500, "body": "", "delay_ms": 0, "drop": false, "count": 1, "share": 1.0,
//    "seed": 1, "until_new_token": false}
// in which any member may be missing. Throws std::invalid_argument.
Fault FaultFromJson(const Json::Value& value);
Json::Value FaultToJson(const Fault& fault);

// The faults still to come. The oldest one that hits a request is applied to it, alone.
//
// Thread-safety: every operation may be called from any thread.
class FaultPlan {
 public:
  void Add(const Fault& fault);
  void Clear();
  std::vector<Fault> Pending() const;

  // The fault that hits this request, counted down. `token` is that of a UBA request.
  std::optional<Fault> Take(Channel channel, const std::optional<std::string>& token);

 private:
  struct Entry {
    Fault fault;
    std::mt19937 draws;
  };

  mutable std::mutex m_mutex;  // guards what follows
  std::list<Entry> m_entries;
  std::string m_lastToken;
};

}  // namespace Drive::Collection
