// ChildProcess.h - another program, started and ended by a test.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
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

  // The exit status, kKilled after Kill, and something above 128 after a crash. Kills what goes on for
  // longer.
  int Wait(std::chrono::milliseconds limit = std::chrono::minutes(1));

 private:
  std::intptr_t m_process = 0;
  int m_status = -1;  // none yet
};

// Runs a program that leaves the moment of its return from main in `momentFile`, as the steady clock's
// nanoseconds. Returns how long its end took then; throws std::runtime_error when that was not in good order.
inline std::chrono::nanoseconds TimeToEnd(const std::string& program,
                                          const std::vector<std::string>& arguments,
                                          const std::filesystem::path& momentFile) {
  const int status = ChildProcess(program, arguments).Wait();
  if (status != 0) throw std::runtime_error(program + " ended with status " + std::to_string(status));
  const std::chrono::nanoseconds ended(std::chrono::steady_clock::now().time_since_epoch());
  std::int64_t returned = 0;
  std::ifstream(momentFile) >> returned;
  return ended - std::chrono::nanoseconds(returned);
}

}  // namespace Drive::Testing
