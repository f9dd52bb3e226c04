// LogLevel.h - the levels of diagnostic messages.
#pragma once

namespace Drive::LogLevel {

inline constexpr int kNet = 0;
inline constexpr int kDebug = 1;
inline constexpr int kInfo = 2;
inline constexpr int kSync = 3;
inline constexpr int kError = 5;

}  // namespace Drive::LogLevel
