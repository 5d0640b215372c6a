// TNEF containers in memory, against the library that others read them with where that was there at
// build time.
#include <MailReadTnef.h>

#include <cstdio>
#include <cstring>

#include "MailFactory.h"
#include "Measure.h"

#ifdef QD_BENCH_YTNEF
extern "C" {  // its header does not say so
#include <ytnef.h>
}
#endif

namespace quarda::bench {

namespace {

constexpr double kGoal = 5;  // times as fast as the library

/// The number of bytes found in all files.
size_t ReadByEngine(const TTextBlock& block) {
  TMemoryStream stream(block);
  TTnef tnef;
  tnef.LoadFromStream(stream);
  size_t bytes = 0;
  for (size_t i = 0; i < tnef.GetCount(); ++i) bytes += tnef.GetItems(i).GetData().size();
  return bytes;
}

/// The same; 0 without the library.
size_t ReadByLibrary([[maybe_unused]] const TTextBlock& block) {
  size_t bytes = 0;
#ifdef QD_BENCH_YTNEF
  TNEFStruct tnef;
  TNEFInitialize(&tnef);
  tnef.Debug = 0;
  TNEFParseMemory(reinterpret_cast<unsigned char*>(block.Data()), static_cast<long>(block.Size()),
                  &tnef);
  for (Attachment* file = tnef.starting_attach.next; file != nullptr; file = file->next) {
    bytes += file->FileData.size;
  }
  TNEFFree(&tnef);
#endif
  return bytes;
}

void Measure(const std::string& name, const std::string& container) {
  TTextBlock block(container.size());
  std::memcpy(block.Data(), container.data(), container.size());
  std::vector<TWork> works = {{"engine", [&] { return ReadByEngine(block); }}};
  const size_t other = ReadByLibrary(block);
  if (other != 0) works.push_back({"libytnef", [&] { return ReadByLibrary(block); }});
  if (other != 0 && other != ReadByEngine(block)) {
    std::printf("note: the readers disagree: %zu and %zu bytes\n", ReadByEngine(block), other);
  }
  const std::vector<double> seconds = MedianSeconds(works);
  const double bytes = static_cast<double>(block.Size());
  PrintRow({name, MegabytesPerSecond(bytes, seconds[0]),
            other != 0 ? MegabytesPerSecond(bytes, seconds[1]) : "-",
            other != 0 ? Times(seconds[1] / seconds[0]) : "-", "at least " + Times(kGoal)});
}

}  // namespace

}  // namespace quarda::bench

int main() {
  using namespace quarda::bench;
  PrintTitle("Read a TNEF container in memory");
  PrintRow({"", "engine", "libytnef", "ratio", "goal"});
  Measure("20 files of 200 KB", Container(20, 200 << 10, 20));
  Measure("2,000 files of 2 KB", Container(2000, 2 << 10, 21));
}
