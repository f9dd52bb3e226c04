// SeparateThreadTimer.cpp - one detached thread per start, and its handshake with the stop.
#include "bilog/SeparateThreadTimer.h"

#include <exception>
#include <thread>
#include <utility>

#include "commlog/LogLevel.h"
#include "drivelog/CommLog.h"
#include "platform/Clock.h"
#include "platform/KeepLoaded.h"
#include "platform/ProcessEnd.h"

namespace Drive::Bilog {

namespace {

constexpr std::chrono::milliseconds kDefaultPeriod{10000};
constexpr std::chrono::milliseconds kEndPoll{50};

void Report(const char* location, const std::string& text) {
  CommLog::GetInstance().PrintLog(LogLevel::kError, __LINE__, location, text);
}

}  // namespace

// What one start shares with its thread.
struct SeparateThreadTimer::Run {
  std::chrono::milliseconds period;
  std::function<void()> task;
  std::function<void()> hurry;
  std::shared_ptr<Run> previous;  // ends before this one begins; let go of by the thread then
  Platform::WakeSignal stop;
  Platform::WakeSignal ended;
  std::thread::id thread;   // written before the run is published
  bool isStopping = false;  // guarded by the timer's mutex; `stop` is raised after the unlocking
};

SeparateThreadTimer::~SeparateThreadTimer() { Stop(); }

void SeparateThreadTimer::Start(std::chrono::milliseconds period, std::function<void()> task,
                                std::function<void()> hurry) {
  if (Platform::ProcessEnd::OtherThreadsAreGone()) {
    return;
  }
  auto run = std::make_shared<Run>();
  run->period = period.count() > 0 ? period : kDefaultPeriod;
  run->task = std::move(task);
  run->hurry = std::move(hurry);

  Platform::KeepLoaded();
  try {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_run != nullptr && !m_run->isStopping) {
      return;
    }
    run->previous = m_run;
    std::thread thread(Loop, run);
    run->thread = thread.get_id();
    thread.detach();
    m_run = run;
  } catch (const std::exception& error) {
    Report("Drive::Bilog::SeparateThreadTimer::Start",
           std::string("timer thread not started: ") + error.what());
  }
}

void SeparateThreadTimer::Stop() {
  if (Platform::ProcessEnd::OtherThreadsAreGone()) {
    return;  // nobody is left to stop, and whoever held the mutex would hold it for ever
  }
  std::shared_ptr<Run> run;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_run == nullptr || m_run->isStopping) {
      return;
    }
    run = m_run;
    run->isStopping = true;
  }
  run->stop.Raise();
  run->hurry();
  if (run->thread != std::this_thread::get_id()) {
    WaitForEnd(*run);
  }
}

void SeparateThreadTimer::WaitForEnd(const Run& run) {
  while (!run.ended.WaitFor(kEndPoll)) {
    // A thread that the system has ended already will never say so, and the end of the process has no time
    // for one that is stuck.
    if (Platform::ProcessEnd::OtherThreadsAreGone() ||
        (Platform::ProcessEnd::HasBegun() && Platform::ProcessEnd::PatienceLeft().count() == 0)) {
      return;
    }
  }
}

void SeparateThreadTimer::Loop(const std::shared_ptr<Run>& run) {
  if (run->previous != nullptr) {
    WaitForEnd(*run->previous);
    run->previous.reset();
  }
  do {
    try {
      Platform::CurrentClock().WaitFor(run->period, run->stop);
      if (Platform::ProcessEnd::HasBegun()) {
        break;  // a last run would only begin what is aborted at once
      }
      run->task();
    } catch (const std::exception& error) {
      Report("Drive::Bilog::SeparateThreadTimer::Loop", std::string("task failed: ") + error.what());
    } catch (...) {
      Report("Drive::Bilog::SeparateThreadTimer::Loop", "task failed");
    }
  } while (!run->stop.IsRaised());
  run->task = nullptr;
  run->ended.Raise();
}

}  // namespace Drive::Bilog
