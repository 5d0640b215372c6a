// The whole program as the server pays for it: processor time against a bare process start, and
// peak memory. And what the engine adds to the start of a scanner. It measures other processes,
// which only the system's own calls can do.
//
// Usage: bench_process FOLDER
//   FOLDER  holds the installations default, checking, logging, scanner (that one runs /bin/true as
//   a
//           scanner) and plugin, and the folder mails
#include <CommandLauncher.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "MailFactory.h"
#include "Measure.h"

namespace quarda::bench {

namespace {

constexpr int kRuns = 201;

struct TUse {
  double cpuSeconds = 0;
  long peakKilobytes = 0;
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Runs a program to its end. A program that fails would be measured as a fast one, so that ends
/// the measurement.
TUse Run(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  pid_t child = 0;
  int status = 0;
  rusage use = {};
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
      wait4(child, &status, 0, &use) != child || status != 0) {
    std::fprintf(stderr, "%s: failed with status %d\n", arguments[0], status);
    std::exit(1);
  }
  return {Seconds(use.ru_utime) + Seconds(use.ru_stime), use.ru_maxrss};
}

std::string Milliseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", seconds * 1e3);
  return text;
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

/// Written piece by piece: what this process holds would count as its children's memory.
void WriteHugeMail(const std::string& path, std::string_view firstField) {
  const std::string mail = AttachmentMail(64 << 10, 12);
  const size_t end = mail.rfind("--=_mix_1--");
  const std::string lines = Base64Lines(64 << 10, 13);
  std::ofstream file(path, std::ios::binary);
  file << firstField << mail.substr(0, end);
  for (int i = 1; i < 1600; ++i) file << lines;
  file << mail.substr(end);
}

double Median(std::vector<double> seconds) {
  std::ranges::sort(seconds);
  return seconds[seconds.size() / 2];
}

struct TCommand {
  std::string name;
  std::vector<std::string> command;
  double goal;  // times the bare process; 0 = none
};

void MeasureTime(const std::vector<TCommand>& commands) {
  std::vector<std::vector<double>> seconds(commands.size());
  for (int run = 0; run < kRuns; ++run) {
    for (size_t i = 0; i < commands.size(); ++i) {
      seconds[i].push_back(Run(commands[i].command).cpuSeconds);
    }
  }
  PrintTitle("Whole process: processor time, median of " + std::to_string(kRuns) + " runs");
  PrintRow({"", "ms", "x /bin/true", "goal"});
  double bare = 0;
  for (size_t i = 0; i < commands.size(); ++i) {
    const double median = Median(seconds[i]);
    if (i == 0) bare = median;
    PrintRow({commands[i].name, Milliseconds(median), Times(median / bare),
              commands[i].goal > 0 ? "at most " + Times(commands[i].goal) : "-"});
  }
}

/// Run by turns, because the difference is small.
void MeasurePlugin(const std::string& without, const std::string& with, const std::string& mail) {
  std::vector<double> bare;
  std::vector<double> plain;
  std::vector<double> loading;
  for (int run = 0; run < kRuns; ++run) {
    bare.push_back(Run({"/bin/true"}).cpuSeconds);
    plain.push_back(Run({without, mail}).cpuSeconds);
    loading.push_back(Run({with, mail}).cpuSeconds);
  }
  PrintTitle("An outside plug-in, 20 KB mail: processor time, median of " + std::to_string(kRuns) +
             " runs");
  PrintRow({"", "ms", "x /bin/true", "goal"});
  const double added = Median(loading) - Median(plain);
  PrintRow(
      {"quarda without it", Milliseconds(Median(plain)), Times(Median(plain) / Median(bare)), "-"});
  PrintRow({"the plug-in adds", Milliseconds(added), Times(added / Median(bare)),
            "at most " + Times(0.3)});
}

/// The scanner's own processor time counts on both sides.
void MeasureScanner(const std::string& without, const std::string& with, const std::string& mail) {
  std::vector<double> apart;
  std::vector<double> together;
  for (int run = 0; run < kRuns; ++run) {
    apart.push_back(Run({"/bin/true"}).cpuSeconds + Run({without, mail}).cpuSeconds);
    together.push_back(Run({with, mail}).cpuSeconds);
  }
  PrintTitle("With a scanner, 20 KB mail: processor time, median of " + std::to_string(kRuns) +
             " runs");
  PrintRow({"", "ms", "x apart", "goal"});
  PrintRow({"/bin/true and quarda apart", Milliseconds(Median(apart)), Times(1), "-"});
  PrintRow({"quarda runs /bin/true", Milliseconds(Median(together)),
            Times(Median(together) / Median(apart)), "at most " + Times(1.5)});
}

/// Both write the attached mail and the attachment inside it to files.
void MeasureUnpacking(const std::string& quarda, const std::string& folder) {
  constexpr int kUnpackings = 21;
  const std::string ripmime = "/usr/bin/ripmime";
  if (!std::filesystem::exists(ripmime)) return;
  const std::string mail = folder + "/in_around.inp";
  const std::string unpacked = folder + "/unpacked";
  WriteFile(mail, MailAround(AttachmentMail(10 << 20, 18)));
  std::filesystem::create_directories(unpacked);
  std::vector<double> own;
  std::vector<double> other;
  for (int run = 0; run < kUnpackings; ++run) {
    own.push_back(Run({quarda, mail}).cpuSeconds);
    other.push_back(Run({ripmime, "--overwrite", "-i", mail, "-d", unpacked}).cpuSeconds);
  }
  std::filesystem::remove_all(unpacked);
  PrintTitle("An attached mail of 10 MB, its parts written: processor time, median of " +
             std::to_string(kUnpackings) + " runs");
  PrintRow({"", "ms", "x ripmime", "goal"});
  PrintRow({"ripmime", Milliseconds(Median(other)), Times(1), "-"});
  PrintRow({"quarda", Milliseconds(Median(own)), Times(Median(own) / Median(other)),
            "at most " + Times(0.6)});
}

double ElapsedSeconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The clock counts here, because waiting is half the work.
void MeasureExternalRun() {
  const std::string program = "/bin/true";
  std::vector<double> bare;
  std::vector<double> external;
  for (int run = 0; run < kRuns; ++run) {
    bare.push_back(ElapsedSeconds([&] { Run({program}); }));
    external.push_back(ElapsedSeconds([&] {
      const TExecution execution = ExecuteProcess(program, 20, false, {});
      if (!execution.started || execution.exitCode != 0) std::exit(1);
    }));
  }
  PrintTitle("A program run as a scanner: elapsed time, median of " + std::to_string(kRuns) +
             " runs");
  PrintRow({"", "ms", "x bare", "goal"});
  const double ratio = Median(external) / Median(bare);
  PrintRow({"posix_spawn and wait, " + program, Milliseconds(Median(bare)), Times(1), "-"});
  PrintRow(
      {"run by the engine", Milliseconds(Median(external)), Times(ratio), "at most " + Times(1.3)});
}

/// What one more file in a container, or one more attached mail, costs against a process for it.
void MeasureNestedScan(const std::string& quarda, const std::string& single,
                       const std::string& folder) {
  constexpr size_t kMore = 200;
  const std::string few = folder + "/in_few.inp";
  const std::string many = folder + "/in_many.inp";
  const auto measure = [&] {
    return Run({quarda, many}).cpuSeconds - Run({quarda, few}).cpuSeconds;
  };
  const auto medianOfEach = [&](const std::string& fewText, const std::string& manyText) {
    WriteFile(few, fewText);
    WriteFile(many, manyText);
    std::vector<double> each;
    for (int run = 0; run < kRuns; ++run) each.push_back(measure() / kMore);
    return Median(each);
  };
  std::vector<double> processes;
  for (int run = 0; run < kRuns; ++run) processes.push_back(Run({quarda, single}).cpuSeconds);
  const double own = Median(processes);
  const double file = medianOfEach(ContainerMail(1, 2048, 15), ContainerMail(1 + kMore, 2048, 16));
  const double mail = medianOfEach(AttachedMailsMail(1), AttachedMailsMail(1 + kMore));
  PrintTitle("A nested scan: processor time, median of " + std::to_string(kRuns) + " runs");
  PrintRow({"", "ms", "x process", "goal"});
  PrintRow({"a process of its own", Milliseconds(own), Times(1), "-"});
  const std::string goal = "at most " + Times(0.1);
  PrintRow({"a file of 2 KB in a container", Milliseconds(file), Times(file / own), goal});
  PrintRow({"an attached mail", Milliseconds(mail), Times(mail / own), goal});
}

/// The price of an attached mail must not grow with their number.
void MeasureAttachedMails(const std::string& quarda, const std::string& folder) {
  PrintTitle("Attached mails: processor time for each as their number grows");
  PrintRow({"", "ms", "microseconds each"});
  for (const size_t count : {2500, 5000, 10000}) {
    const std::string mail = folder + "/in_attached.inp";
    WriteFile(mail, AttachedMailsMail(count));
    const double seconds = Run({quarda, mail}).cpuSeconds;
    char each[32];
    std::snprintf(each, sizeof each, "%.0f", seconds * 1e6 / static_cast<double>(count));
    PrintRow({std::to_string(count), Milliseconds(seconds), each});
  }
}

void MeasureMemory(const std::vector<TCommand>& commands) {
  // Until it starts its program a child shares this process's memory, which the system counts too.
  PrintTitle("Whole process: peak memory (nothing shows less than /bin/true does here)");
  PrintRow({"", "MB", "ms", "goal"});
  for (const TCommand& command : commands) {
    const TUse use = Run(command.command);
    char megabytes[32];
    char milliseconds[32];
    std::snprintf(megabytes, sizeof megabytes, "%.1f",
                  static_cast<double>(use.peakKilobytes) / 1024);
    std::snprintf(milliseconds, sizeof milliseconds, "%.1f", use.cpuSeconds * 1e3);
    PrintRow({command.name, megabytes, milliseconds,
              command.goal > 0 ? "at most " + std::to_string(static_cast<int>(command.goal)) + " MB"
                               : "-"});
  }
}

}  // namespace

}  // namespace quarda::bench

int main(int argc, char** argv) {
  using namespace quarda::bench;
  if (argc != 2) {
    std::fprintf(stderr, "usage: bench_process FOLDER\n");
    return 2;
  }
  const std::string work = argv[1];
  const auto host = [&work](const char* base) { return work + "/" + base + "/quarda"; };
  const std::string quarda = host("default");
  const std::string folder = work + "/mails";
  const std::string small = folder + "/in_2k.inp";
  const std::string medium = folder + "/in_20k.inp";
  const std::string container = folder + "/in_container.inp";
  const std::string huge = folder + "/in_100m.inp";
  WriteFile(small, OrdinaryMails(1, 2048, 10)[0]);
  WriteFile(medium, OrdinaryMails(1, 20480, 11)[0]);
  const std::string changed = folder + "/in_100m_changed.inp";
  WriteHugeMail(huge, "");
  WriteHugeMail(changed, "Subject: 100% free\r\n");

  MeasureMemory({{"/bin/true", {"/bin/true"}, 0},
                 {"quarda, 2 KB mail", {quarda, small}, 0},
                 {"quarda, 100 MB mail", {quarda, huge}, 16},
                 {"the same, changed by a check", {host("checking"), changed}, 1.3 * 105}});
  WriteFile(changed, "");
  WriteFile(container, ContainerMail(20, 200 << 10, 14));  // takes memory for good
  MeasureTime({{"/bin/true", {"/bin/true"}, 0},
               {"quarda, 2 KB mail", {quarda, small}, 0},
               {"quarda, 20 KB mail", {quarda, medium}, 2},
               {"the same, every check on and logged", {host("checking"), medium}, 2.5},
               {"the same, every message logged", {host("logging"), medium}, 0},
               {"quarda, container, 20 of 200 KB", {quarda, container}, 8}});
  MeasurePlugin(quarda, host("plugin"), medium);
  MeasureScanner(quarda, host("scanner"), medium);
  MeasureUnpacking(quarda, folder);
  MeasureNestedScan(quarda, small, folder);
  MeasureAttachedMails(quarda, folder);
  // Only a container that could not be read would have been worth a line.
  if (std::ifstream(work + "/default/Quarda.log").peek() != std::char_traits<char>::eof()) {
    std::fprintf(stderr, "the containers were not read; see Quarda.log\n");
    return 1;
  }
  MeasureExternalRun();
}
