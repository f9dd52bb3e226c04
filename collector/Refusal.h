// Refusal.h - how a check says why it does not take a request.
#pragma once

#include <stdexcept>
#include <string>

namespace Drive::Collection {

// Thrown by the checks among themselves; Check() in RequestCheck.h turns it into a verdict.
class Refusal : public std::runtime_error {
 public:
  explicit Refusal(const std::string& reason, int status = 422)
      : std::runtime_error(reason), m_status(status) {}
  int Status() const { return m_status; }

 private:
  int m_status;  // HTTP status of the answer
};

inline void Require(bool holds, const char* reason) {
  if (!holds) {
    throw Refusal(reason);
  }
}

}  // namespace Drive::Collection
