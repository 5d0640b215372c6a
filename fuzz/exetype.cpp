// The headers of programs: any bytes get an answer of a known shape.
#include <ExecutableHeader.h>

#include "Fuzz.h"

using namespace quarda;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view image = fuzz::AsText(data, size);
  const auto offset = platform::NewHeaderOffset(image.substr(0, platform::kOldHeaderSize));
  fuzz::Require(offset.has_value() == image.starts_with("MZ"), "only programs have an answer");
  if (!offset || *offset >= size) return 0;
  const std::string_view header = image.substr(*offset);
  const uint32_t type = platform::ExecutableTypeOf(header.substr(0, platform::kNewHeaderSize));
  fuzz::Require(type == platform::ExecutableTypeOf(header), "what lies behind changes nothing");
  const uint32_t kind = type & 0xFFFF;
  fuzz::Require(kind == ('M' | 'Z' << 8) || kind == ('N' | 'E' << 8) || kind == ('P' | 'E' << 8),
                "one of three kinds");
  fuzz::Require(type == kind || kind != platform::kDosProgram, "no version for MS-DOS");
  return 0;
}
