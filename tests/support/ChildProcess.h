// ChildProcess.h - another program, started and ended by a test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Drive::Testing {

// Thread-safety: one object belongs to one thread.
// Lifetime:      a program that still runs is killed with the object.
class ChildProcess {
 public:
  static constexpr int kKilled = 137;

  // Texts are UTF-8, and the arguments hold no quotation marks. Throws std::system_error.
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Ends the program at once, wherever it is. It is over when Wait has returned.
  void Kill();

  // The exit status, kKilled after Kill, and something above 128 after a crash.
  int Wait();

 private:
  std::intptr_t m_process = 0;
  int m_status = -1;  // none yet
};

}  // namespace Drive::Testing
