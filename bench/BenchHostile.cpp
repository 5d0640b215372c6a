// Whether time for a byte and memory stay the same when hostile input grows: each trap at a
// quarter, a half and the whole of its size, in a process of its own, so that each has a peak of
// its own; and the whole program on mails of the same kind. Ends with 1 when anything grows faster
// than linearly. Meant to run on a small stack, where recursion along a nesting shows as well.
//
// Usage: bench_hostile [BASE-FOLDER WORK-FOLDER]
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>

#include "HtmlPages.h"
#include "MailFactory.h"
#include "Measure.h"
#include "Traps.h"

namespace quarda::bench {

namespace {

// A quadratic step costs four times as much for a byte at n as at n/4; sorting explains a fifth
// more, and the caches, which the larger inputs no longer fit into, up to twice.
constexpr double kLinearUpTo = 2.5;

struct TCost {
  double secondsForByte = 0;
  double peakBytes = 0;
  size_t inputSize = 0;
};

double PeakBytes(const rusage& use) { return static_cast<double>(use.ru_maxrss) * 1024; }

[[noreturn]] void Fail(const char* what) {
  std::perror(what);
  std::exit(2);
}

/// What the work costs in a process of its own; a process that dies has failed.
TCost InOwnProcess(const std::function<TCost()>& work) {
  int channel[2];
  if (::pipe(channel) != 0) Fail("pipe");
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child < 0) Fail("fork");
  if (child == 0) {
    const TCost cost = work();
    const bool told = ::write(channel[1], &cost, sizeof cost) == sizeof cost;
    ::_exit(told ? 0 : 2);
  }
  ::close(channel[1]);
  TCost cost;
  const bool told = ::read(channel[0], &cost, sizeof cost) == sizeof cost;
  ::close(channel[0]);
  int status = 0;
  rusage use = {};
  ::wait4(child, &status, 0, &use);
  if (!told || status != 0) {
    std::printf("the process died with status %d\n", status);
    std::exit(2);
  }
  cost.peakBytes = PeakBytes(use);
  return cost;
}

TCost CostOfTrap(const TTrap& trap, size_t n) {
  return InOwnProcess([&] {
    const std::string input = trap.make(n);
    const double seconds = MedianSeconds({{"", [&] { return trap.run(input); }}}, 3)[0];
    return TCost{seconds / static_cast<double>(input.size()), 0, input.size()};
  });
}

struct TScan {
  double seconds;
  double peakBytes;
};

TScan Scan(const std::string& program, const std::string& file) {
  std::vector<char*> command = {const_cast<char*>(program.c_str()), const_cast<char*>(file.c_str()),
                                nullptr};
  pid_t child = 0;
  int status = 0;
  rusage use = {};
  if (::posix_spawn(&child, command[0], nullptr, nullptr, command.data(), environ) != 0) {
    Fail(command[0]);
  }
  ::wait4(child, &status, 0, &use);
  if (!WIFEXITED(status)) {
    std::printf("the scan died with status %d\n", status);
    std::exit(2);
  }
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {seconds(use.ru_utime) + seconds(use.ru_stime), PeakBytes(use)};
}

/// The median of three scans, each of a fresh mail: a scan may change it. What this process holds
/// would count as its children's memory, so the mail is made in one of its own as well.
TCost CostOfScan(const std::string& program, const std::string& file, const TShape& shape,
                 size_t n) {
  std::vector<TScan> scans;
  size_t size = 0;
  for (int run = 0; run < 3; ++run) {
    size = InOwnProcess([&] {
             const std::string mail = shape.make(n);
             std::ofstream(file, std::ios::binary) << mail;
             return TCost{0, 0, mail.size()};
           }).inputSize;
    scans.push_back(Scan(program, file));
  }
  std::ranges::sort(scans, {}, &TScan::seconds);
  return {scans[1].seconds / static_cast<double>(size), scans[1].peakBytes, size};
}

std::string Text(const char* format, double value) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

/// Whether the cost for a byte stays the same.
bool PrintGrowth(std::string_view name, size_t n, const std::function<TCost(size_t n)>& cost) {
  std::vector<TCost> costs;
  for (const size_t part : {4, 2, 1}) costs.push_back(cost(n / part));
  const double growth = costs[2].secondsForByte / costs[0].secondsForByte;
  std::vector<std::string> row = {std::string(name), std::to_string(n)};
  for (const TCost& each : costs) row.push_back(Text("%.2f", each.secondsForByte * 1e9));
  const bool isLinear = growth <= kLinearUpTo;
  row.push_back(isLinear ? "linear" : Text("x %.2f FAILED", growth));
  row.push_back(Text("%.1f MB", costs[2].peakBytes / 1e6));
  row.push_back(Text("%.1f x", costs[2].peakBytes / static_cast<double>(costs[2].inputSize)));
  PrintRow(row);
  return isLinear;
}

void PrintHead(const std::string& title) {
  PrintTitle(title);
  PrintRow(
      {"trap", "n", "at n/4", "at n/2", "at n", "goal: linear", "peak memory", "of the input"});
}

bool MeasureModules() {
  PrintHead("Hostile input of each module: nanoseconds of processor time for a byte");
  bool good = true;
  for (const TTrap& trap : Traps()) {
    good &= PrintGrowth(trap.name, trap.n, [&](size_t n) { return CostOfTrap(trap, n); });
  }
  return good;
}

bool MeasureScans(const std::string& base, const std::string& work) {
  PrintHead("The whole program with every check on: nanoseconds of processor time for a byte");
  std::vector<TShape> shapes = HostileShapes();
  shapes.insert(shapes.end(), {{"attachments alike", 5000, SameAttachments},
                               {"attached mails", 4000, AttachedMailsMail},
                               {"a container of many files", 4000, SmallFilesMail},
                               {"all of it in one mail", 40000, AllShapesMail}});
  bool good = true;
  for (const TShape& shape : shapes) {
    good &= PrintGrowth(shape.name, shape.n, [&](size_t n) {
      return CostOfScan(base + "/quarda", work + "/in_hostile.inp", shape, n);
    });
  }
  return good;
}

}  // namespace

}  // namespace quarda::bench

int main(int argc, char** argv) {
  using namespace quarda::bench;
  const bool modules = MeasureModules();
  const bool scans = argc < 3 || MeasureScans(argv[1], argv[2]);
  return modules && scans ? 0 : 1;
}
