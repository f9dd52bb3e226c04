// JsonNumber.h - numbers that JSON, or the integer they are to become, cannot express.
#pragma once

#include <cmath>
#include <limits>

namespace Drive::Bilog {

// Not a number and the infinities become 0.
inline double FiniteOr0(double value) { return std::isfinite(value) ? value : 0.0; }

// Truncated; what does not fit becomes the nearest number that does, and not a number 0.
template <typename Integer>
Integer Clamped(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) {
    return 0;
  }
  // The largest 64-bit integer has no double of its own; the next one above it is 2^63.
  if (value >= static_cast<double>(Limits::max())) {
    return Limits::max();
  }
  return value <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<Integer>(value);
}

}  // namespace Drive::Bilog
