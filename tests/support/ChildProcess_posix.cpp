// ChildProcess_posix.cpp - another program, POSIX.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "tests/support/ChildProcess.h"

namespace Drive::Testing {

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<char*> pointers{
      const_cast<char*>(program.c_str())};  // that the interface is not const is history
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

int ChildProcess::Wait() {
  int status = 0;
  while (m_status < 0) {
    if (waitpid(static_cast<pid_t>(m_process), &status, 0) < 0 && errno == EINTR) continue;
    m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return m_status;
}

}  // namespace Drive::Testing
