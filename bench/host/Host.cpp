// Host.cpp - a program without the library that loads it, lets it rest, and prints what the system counted.
//
//   drivelog_bench_host PLUGIN FOLDER SECONDS   the plug-in, a folder for the user's files, how long to rest,
//   0: not at all
//
// Prints one "NAME VALUE" a line. The resting begins 12.5 s after the start of the library's threads, in the
// middle of their shortest period: behind the first two looks for rows, of which one makes the index of the
// write-ahead log and the other has the system note that it was read. The main thread sleeps through it.
#include <dlfcn.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// The sum of the numbers behind `name` in the lines of a file below /proc.
std::int64_t Sum(const std::filesystem::path& file, const std::string& name) {
  std::ifstream in(file);
  std::int64_t sum = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, name.size(), name) == 0) sum += std::atoll(line.c_str() + line.find(':') + 1);
  }
  return sum;
}

std::int64_t Entries(const char* folder) {
  const std::filesystem::directory_iterator begin(folder);
  return std::distance(begin, std::filesystem::directory_iterator());
}

// KiB that would be free again without this process.
std::int64_t PrivateMemory() { return Sum("/proc/self/smaps_rollup", "Private_"); }

struct Counts {
  std::int64_t wakeUps = 0;  // of all threads but the main one
  std::int64_t written = Sum("/proc/self/io", "write_bytes");
  std::int64_t calls = Sum("/proc/self/io", "syscw");
  timespec cpu{};

  Counts() {
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
      if (thread.path().filename() != std::to_string(getpid())) {
        wakeUps += Sum(thread.path() / "status", "voluntary_ctxt_switches");
      }
    }
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
  }
};

// SQLite gives its files to the database's owner with each opening when root runs it, which no client is.
bool BecomeOrdinaryUser(const char* folder) {
  constexpr unsigned kNobody = 65534;
  return geteuid() != 0 || (chown(folder, kNobody, kNobody) == 0 && setgid(kNobody) == 0 &&
                            setuid(kNobody) == 0 && prctl(PR_SET_DUMPABLE, 1) == 0);  // for /proc/self
}

void Print(const char* name, std::int64_t value) { std::cout << name << ' ' << value << '\n'; }

std::int64_t MicrosecondsSince(Clock::time_point begin) {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return EXIT_FAILURE;
  setenv("HOME", argv[2], 1);
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) unsetenv(name);
  const std::int64_t memory = PrivateMemory();
  const std::int64_t handles = Entries("/proc/self/fd");

  auto begin = Clock::now();
  void* const plugin = dlopen(argv[1], RTLD_NOW);
  Print("load_us", MicrosecondsSince(begin));
  const auto start =
      plugin == nullptr ? nullptr : reinterpret_cast<bool (*)()>(dlsym(plugin, "StartLogging"));
  if (start == nullptr) {
    std::cerr << dlerror() << std::endl;
    return EXIT_FAILURE;
  }
  Print("loaded_kib", PrivateMemory() - memory);
  begin = Clock::now();
  if (!BecomeOrdinaryUser(argv[2]) || !start()) return EXIT_FAILURE;
  Print("initialise_us", MicrosecondsSince(begin));

  const int seconds = std::atoi(argv[3]);
  std::cout.flush();
  if (seconds == 0) _exit(EXIT_SUCCESS);
  std::this_thread::sleep_for(std::chrono::milliseconds(12500));
  const Counts before;
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const Counts after;
  Print("wake_ups", after.wakeUps - before.wakeUps);
  Print("written_bytes", after.written - before.written);
  Print("write_calls", after.calls - before.calls);
  Print("cpu_us",
        (after.cpu.tv_sec - before.cpu.tv_sec) * 1000000 + (after.cpu.tv_nsec - before.cpu.tv_nsec) / 1000);
  Print("private_kib", PrivateMemory() - memory);
  Print("handles", Entries("/proc/self/fd") - handles);
  Print("threads", Entries("/proc/self/task") - 1);
  std::cout.flush();
  _exit(EXIT_SUCCESS);
}
