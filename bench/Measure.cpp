#include "Measure.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace quarda::bench {

namespace {

constexpr double kLeastSeconds = 0.004;  // the clock counts microseconds
volatile size_t sink;

double SecondsOf(const TWork& work, int repeats) {
  const std::clock_t start = std::clock();
  for (int i = 0; i < repeats; ++i) sink = sink + work.run();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / repeats;
}

int RepeatsFor(const TWork& work) {
  work.run();  // the first run pays for memory that the others reuse
  const double once = SecondsOf(work, 1);
  if (once >= kLeastSeconds) return 1;
  return static_cast<int>(kLeastSeconds / std::max(once, 1e-7)) + 1;
}

}  // namespace

std::vector<double> MedianSeconds(const std::vector<TWork>& works, int rounds) {
  std::vector<int> repeats;
  for (const TWork& work : works) repeats.push_back(RepeatsFor(work));
  std::vector<std::vector<double>> seconds(works.size());
  for (int round = 0; round < rounds; ++round) {
    for (size_t i = 0; i < works.size(); ++i) {
      seconds[i].push_back(SecondsOf(works[i], repeats[i]));
    }
  }
  std::vector<double> medians;
  for (auto& runs : seconds) {
    std::ranges::nth_element(runs, runs.begin() + static_cast<ptrdiff_t>(runs.size() / 2));
    medians.push_back(runs[runs.size() / 2]);
  }
  return medians;
}

std::string Times(double ratio) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f x", ratio);
  return text;
}

std::string MegabytesPerSecond(double bytes, double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f MB/s", bytes / seconds / 1e6);
  return text;
}

void PrintRow(const std::vector<std::string>& columns) {
  for (size_t i = 0; i < columns.size(); ++i) {
    std::printf(i == 0 ? "%-36s" : " %15s", columns[i].c_str());
  }
  std::printf("\n");
}

void PrintTitle(const std::string& title) {
  std::printf("\n%s\n%s\n", title.c_str(), std::string(title.size(), '-').c_str());
}

}  // namespace quarda::bench
