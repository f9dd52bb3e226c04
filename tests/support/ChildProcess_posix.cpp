// ChildProcess_posix.cpp - another program, POSIX.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>

#include "tests/support/ChildProcess.h"

namespace Drive::Testing {

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<char*> pointers{const_cast<char*>(program.c_str())};  // the interface is older than const
  for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  pid_t process = 0;
  const int error = posix_spawn(&process, program.c_str(), nullptr, nullptr, pointers.data(), environ);
  if (error != 0) throw std::system_error(error, std::generic_category(), program);
  m_process = process;
}

ChildProcess::~ChildProcess() {
  Kill();
  Wait();
}

void ChildProcess::Kill() {
  if (m_status < 0) kill(static_cast<pid_t>(m_process), SIGKILL);
}

int ChildProcess::Wait(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (m_status < 0) {
    const pid_t ended = waitpid(static_cast<pid_t>(m_process), &status, WNOHANG);
    if (ended > 0) {
      m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } else if (ended < 0 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "waitpid");
    } else {
      if (std::chrono::steady_clock::now() > end) Kill();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  return m_status;
}

}  // namespace Drive::Testing
