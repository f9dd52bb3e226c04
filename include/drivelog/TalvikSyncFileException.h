// TalvikSyncFileException.h - what the exported row type throws when a field is missing.
#pragma once

#include <stdexcept>
#include <string>

#include "drivelog/Export.h"

namespace Drive {

// Carries a message; what() gives it.
class DRIVELOG_API TalvikSyncFileException : public std::runtime_error {
 public:
  explicit TalvikSyncFileException(const std::string& message);
  TalvikSyncFileException(const TalvikSyncFileException& other) noexcept;
  TalvikSyncFileException& operator=(const TalvikSyncFileException& other) noexcept;
  ~TalvikSyncFileException() override;
};

}  // namespace Drive
