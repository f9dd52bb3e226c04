// FittingParts.cpp - delivers a batch in as few requests as fit the size limit of a body.
#include "transport/FittingParts.h"

namespace Drive::Bilog {

bool DeliverInFittingParts(const std::vector<UserLog>& batch,
                           const std::function<PartResult(const std::vector<UserLog>& part)>& deliver,
                           const std::function<void(const std::vector<UserLog>& part)>& delivered,
                           const std::function<void(const UserLog& record)>& drop) {
  if (batch.empty()) {
    return true;
  }
  switch (deliver(batch)) {
    case PartResult::kDelivered:
      delivered(batch);
      return true;
    case PartResult::kFailed:
      return false;
    case PartResult::kTooLarge:
      break;
  }
  if (batch.size() == 1) {
    drop(batch.front());
    return true;
  }
  const auto middle = batch.begin() + static_cast<std::ptrdiff_t>(batch.size() / 2);
  return DeliverInFittingParts({batch.begin(), middle}, deliver, delivered, drop) &&
         DeliverInFittingParts({middle, batch.end()}, deliver, delivered, drop);
}

}  // namespace Drive::Bilog
