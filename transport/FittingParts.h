// FittingParts.h - delivers a batch in as few requests as fit the size limit of a body.
#pragma once

#include <functional>
#include <vector>

#include "drivelog/UserLog.h"

namespace Drive::Bilog {

enum class PartResult {
  kDelivered,  // accepted: its rows can go
  kFailed,     // not accepted: its rows stay, and nothing more of the batch is tried
  kTooLarge    // no body could be made within the limit: to be halved
};

// Gives `deliver` the whole batch, and halves it for as long as the answer is kTooLarge. `drop` gets a single
// record that is too large by itself. `delivered` gets each part that was accepted, at once. True when every
// part was delivered or dropped.
bool DeliverInFittingParts(const std::vector<UserLog>& batch,
                           const std::function<PartResult(const std::vector<UserLog>& part)>& deliver,
                           const std::function<void(const std::vector<UserLog>& part)>& delivered,
                           const std::function<void(const UserLog& record)>& drop);

}  // namespace Drive::Bilog
