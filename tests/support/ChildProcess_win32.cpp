// ChildProcess_win32.cpp - another program, Windows.
#include <windows.h>

#include <system_error>

#include "client/log/TypeConvert.h"
#include "tests/support/ChildProcess.h"

namespace Drive::Testing {

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
  std::string line = "\"" + program + "\"";
  for (const std::string& argument : arguments) line += " \"" + argument + "\"";
  std::wstring wideLine = TypeConvert::UTF8ToUnicode(line);
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  PROCESS_INFORMATION information{};
  if (CreateProcessW(nullptr, wideLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                     &information) == 0) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), program);
  }
  CloseHandle(information.hThread);
  m_process = reinterpret_cast<std::intptr_t>(information.hProcess);
}

ChildProcess::~ChildProcess() {
  Kill();
  Wait();
  CloseHandle(reinterpret_cast<HANDLE>(m_process));
}

void ChildProcess::Kill() {
  if (m_status < 0) TerminateProcess(reinterpret_cast<HANDLE>(m_process), kKilled);
}

int ChildProcess::Wait(std::chrono::milliseconds limit) {
  if (m_status < 0) {
    DWORD code = 0;
    const HANDLE process = reinterpret_cast<HANDLE>(m_process);
    if (WaitForSingleObject(process, static_cast<DWORD>(limit.count())) == WAIT_TIMEOUT) Kill();
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    m_status = static_cast<int>(code & 0x7FFFFFFFU);  // a crash has the highest bits of all
  }
  return m_status;
}

}  // namespace Drive::Testing
