// CommLog.h - the one road by which the library's diagnostic messages leave it.
#pragma once

#include <functional>
#include <string>

#include "drivelog/Export.h"

// Hands each diagnostic message either to the function that the host installed or, when there is none, to
// the client's log files.
//
// Levels: 0 network, 1 debug, 2 information, 3 sync, 4 user interface, 5 error; any other level counts as 5
//         in the log files.
// Surprises: in the log files the line is that of PrintLog itself; the caller's line reaches only an
//         installed function. Messages that come after the process has begun to destroy its static objects
//         are dropped, so that a host's function is never called behind the end of its own data.
// Thread-safety: every operation may be called from any thread. The installed function is called on the
//         thread that reports, from several threads at once, and under no lock of the library.
class DRIVELOG_API CommLog {
 public:
  // level, source line, fully qualified name of the reporting function, message text (UTF-8).
  using LogFunc =
      std::function<void(int level, int line, const std::string& location, const std::string& message)>;

  // The one instance, created on first use.
  static CommLog& GetInstance();

  // Sends the messages to `function` from now on. An empty function sends them to the log files. A call of
  // the previous function that is under way on another thread may still end after this returns. Never throws:
  // without memory for the function the previous one stays, and is told.
  void SetLogFunc(LogFunc function);

  // Reports one message; the texts are UTF-8. Never throws: what an installed function throws is swallowed,
  // since there is nowhere left to report it. A message that the log files cannot take is lost.
  void PrintLog(int level, int line, const std::string& location, const std::string& message);

  CommLog(const CommLog&) = delete;
  CommLog& operator=(const CommLog&) = delete;

 private:
  CommLog();
  ~CommLog() = default;

  struct State;
  State* m_state;  // never freed: detached threads report until the process is gone
};
