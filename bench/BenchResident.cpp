// The resident engine against a process of its own for each mail, and what many requests leave
// behind in it: with this program as the asking side, as a mail server could be, and with a client
// process for each mail.
//
// Usage: bench_resident BASE-FOLDER MAIL [REQUESTS]
#include <NamedObjects.h>
#include <SharedEngineRecord.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Measure.h"

namespace quarda::bench {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "bench_resident: %s\n", what);
  std::exit(1);
}

pid_t Start(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
    Fail("the program does not start");
  }
  return child;
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double CpuOf(const rusage& use) { return Seconds(use.ru_utime) + Seconds(use.ru_stime); }

double OwnCpu() {
  rusage use{};
  getrusage(RUSAGE_SELF, &use);
  return CpuOf(use);
}

double WaitFor(pid_t child) {
  rusage use{};
  int status = 0;
  if (wait4(child, &status, 0, &use) != child || status != 0) Fail("a process failed");
  return CpuOf(use);
}

double Elapsed() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

/// Asks for one scan as the client does.
void Ask(SharedEngineRecord& record, const std::string& line) {
  platform::TNamedMutex mutex(kRequestMutexName);
  if (mutex.Wait(kRequestWaitMilliseconds) != platform::TWaitResult::kOwned) Fail("no mutex");
  std::memcpy(record.RequestCommandLine, line.c_str(), line.size() + 1);
  mutex.Release();
  if (platform::SendToWindow(kEngineWindowClass, kEngineWindowTitle, kScanRequest) != 0) {
    Fail("a request was not served");
  }
}

/// What the kernel has counted for a process so far.
double CpuOfRunning(pid_t process) {
  std::ifstream times("/proc/" + std::to_string(process) + "/schedstat");
  double nanoseconds = 0;
  if (!(times >> nanoseconds)) Fail("the kernel does not tell a process's time");
  return nanoseconds / 1e9;
}

struct TCost {
  double cpu = 0;
  double elapsed = 0;
};

/// A program run again and again; what another process does for it is part of its cost.
TCost CostOf(const std::vector<std::string>& command, int runs, pid_t helper = 0) {
  TCost cost;
  const double helped = helper == 0 ? 0 : CpuOfRunning(helper);
  const double start = Elapsed();
  for (int i = 0; i < runs; ++i) cost.cpu += WaitFor(Start(command));
  cost.elapsed = (Elapsed() - start) / runs;
  if (helper != 0) cost.cpu += CpuOfRunning(helper) - helped;
  cost.cpu /= runs;
  return cost;
}

struct TState {
  long kilobytes = 0;
  size_t descriptors = 0, files = 0;
};

TState StateOf(pid_t engine, const std::string& base) {
  TState state;
  const fs::path process = "/proc/" + std::to_string(engine);
  std::ifstream pages(process / "statm");
  long whole = 0;
  pages >> whole >> state.kilobytes;
  state.kilobytes *= sysconf(_SC_PAGESIZE) / 1024;
  for (const auto& entry : fs::directory_iterator(process / "fd"))
    state.descriptors += !entry.path().empty();
  for (const auto& entry : fs::recursive_directory_iterator(base))
    state.files += entry.is_regular_file();
  return state;
}

void PrintState(const char* when, const TState& state) {
  PrintRow({when, std::to_string(state.kilobytes), std::to_string(state.descriptors),
            std::to_string(state.files)});
}

void PrintCost(const char* name, const TCost& cost, const TCost& ofProcess) {
  char milliseconds[2][32];
  std::snprintf(milliseconds[0], sizeof milliseconds[0], "%.3f", cost.cpu * 1e3);
  std::snprintf(milliseconds[1], sizeof milliseconds[1], "%.3f", cost.elapsed * 1e3);
  PrintRow({name, milliseconds[0], milliseconds[1], Times(cost.cpu / ofProcess.cpu),
            Times(cost.elapsed / ofProcess.elapsed)});
}

}  // namespace
}  // namespace quarda::bench

int main(int argc, char** argv) {
  using namespace quarda::bench;
  if (argc < 3) Fail("usage: bench_resident BASE-FOLDER MAIL [REQUESTS]");
  const std::string base = argv[1];
  const std::string mail = argv[2];
  const int requests = argc > 3 ? std::atoi(argv[3]) : 100'000;
  constexpr int kProcesses = 500;
  constexpr int kWarmUp = 1000;

  const pid_t engine = Start({base + "/quarda", "-daemon"});
  for (int i = 0; !quarda::platform::MessageWindowExists(quarda::kEngineWindowClass,
                                                         quarda::kEngineWindowTitle);
       ++i) {
    if (i == 1000) Fail("the resident engine does not start");
    usleep(1000);
  }
  const quarda::platform::TNamedMemory memory(quarda::kSharedMemoryName, 0,
                                              quarda::platform::kMemoryAll);
  auto& record = *static_cast<quarda::SharedEngineRecord*>(memory.Address());
  const std::string line = "quarda \"" + mail + "\"";
  for (int i = 0; i < kWarmUp; ++i) Ask(record, line);

  const TCost bare = CostOf({"/bin/true"}, kProcesses);
  const TCost process = CostOf({base + "/quarda", mail}, kProcesses);
  const int served = record.RequestCount;
  const TCost client = CostOf({base + "/quarda-request", mail}, kProcesses, engine);
  if (record.RequestCount != served + kProcesses) Fail("the client scans itself");

  const TState before = StateOf(engine, base);
  const double start = Elapsed();
  const double startCpu = OwnCpu() + CpuOfRunning(engine);
  for (int i = 0; i < requests; ++i) Ask(record, line);
  const TCost protocol = {(OwnCpu() + CpuOfRunning(engine) - startCpu) / requests,
                          (Elapsed() - start) / requests};
  const TState after = StateOf(engine, base);
  quarda::platform::PostToWindow(quarda::kEngineWindowClass, quarda::kEngineWindowTitle,
                                 quarda::platform::kCloseMessage);
  WaitFor(engine);

  PrintTitle("A 20 KB mail: its own process, or the resident engine (both sides; goal 0.5)");
  PrintRow({"", "ms CPU", "ms elapsed", "x CPU", "x elapsed"});
  PrintCost("/bin/true", bare, process);
  PrintCost("a process of its own", process, process);
  PrintCost("quarda-request and the engine", client, process);
  PrintCost("asked without a new process", protocol, process);
  PrintTitle("What " + std::to_string(requests) + " requests leave in the resident engine");
  PrintRow({"", "KB resident", "descriptors", "files"});
  PrintState("before", before);
  PrintState("after", after);
}
