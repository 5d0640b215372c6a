#include "Engine.h"

#include <Library.h>
#include <Program.h>

#include <cstdio>
#include <exception>
#include <string>

namespace quarda {
namespace {

using TRun = int32_t (*)();

/// The entry of the engine, or null.
TRun LoadEngine() {
  const std::string path = platform::ProgramFolder() + "\\" + QD_ENGINE_FILE;
  const auto engine = platform::LoadLibraryFile(path);
  if (engine == 0) return nullptr;
  return reinterpret_cast<TRun>(platform::FindExport(engine, "Run"));
}

}  // namespace

int32_t RunEngine(const char* program) noexcept {
  try {
    if (const TRun run = LoadEngine()) return run();
    std::fprintf(stderr, "%s: the engine library %s cannot be loaded\n", program, QD_ENGINE_FILE);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program, error.what());
  }
  return 0;
}

}  // namespace quarda
