// The host program that the mail server starts for every file: it loads the engine library from its
// own folder, calls the engine and ends with the verdict.
#include <Library.h>
#include <Program.h>

#include <cstdio>
#include <exception>
#include <string>

namespace {

using namespace quarda;

using TRun = int32_t (*)();

/// The entry of the engine, or null.
TRun LoadEngine() {
  const std::string path = platform::ProgramFolder() + "\\" + QD_ENGINE_FILE;
  const auto engine = platform::LoadLibraryFile(path);
  if (engine == 0) return nullptr;
  return reinterpret_cast<TRun>(platform::FindExport(engine, "Run"));
}

}  // namespace

int main() {
  try {
    if (const TRun run = LoadEngine()) return run();
    std::fprintf(stderr, "quarda: the engine library %s cannot be loaded\n", QD_ENGINE_FILE);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quarda: %s\n", error.what());
  }
  return 0;  // without an engine no mail is blocked
}
