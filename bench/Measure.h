// Processor time of pieces of work that are compared with each other.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quarda::bench {

/// One piece of work. Its result is used, so that no compiler leaves the work out.
struct TWork {
  std::string name;
  std::function<size_t()> run;
};

/// The median processor seconds of one run of each work. The works take turns, so that whatever
/// else the machine does meets all of them alike.
std::vector<double> MedianSeconds(const std::vector<TWork>& works, int rounds = 15);

/// A figure as it stands in the table: "2.35 x", "1,234 MB/s".
std::string Times(double ratio);
std::string MegabytesPerSecond(double bytes, double seconds);

/// Prints a row: the columns after the first are aligned right.
void PrintRow(const std::vector<std::string>& columns);
void PrintTitle(const std::string& title);

}  // namespace quarda::bench
