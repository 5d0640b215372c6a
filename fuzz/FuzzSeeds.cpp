// Runs a fuzz target over files: as an ordinary test over the seeds of its corpus and over changed
// copies of them, or over one input that once failed.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using TInputs = std::vector<std::string>;

void Run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

void Read(const std::filesystem::path& path, TInputs& inputs) {
  if (std::filesystem::is_directory(path)) {
    for (const auto& entry : std::filesystem::directory_iterator(path)) Read(entry.path(), inputs);
    return;
  }
  std::ifstream file(path, std::ios::binary);
  inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// One of the seeds with some bytes changed, cut out, doubled or taken over from another one.
std::string Changed(const TInputs& seeds, std::mt19937& random) {
  const auto below = [&](size_t limit) { return random() % limit; };
  std::string text = seeds[below(seeds.size())];
  for (size_t left = 1 + below(6); left > 0; --left) {
    const std::string& other = seeds[below(seeds.size())];
    const size_t at = below(text.size() + 1), from = below(other.size() + 1), size = below(80);
    switch (below(6)) {
      case 0:
        text.erase(at, size);
        break;
      case 1:
        text.insert(at, text.substr(at, size));
        break;
      case 2:
        text.insert(at, other, from, size);
        break;
      case 3:
        text.replace(at, size, other, from, size);
        break;
      case 4:
        text.resize(at);
        break;
      default:
        text.insert(at, 1, static_cast<char>(random()));
        if (at + 1 < text.size()) text.erase(at + 1, below(2));
    }
  }
  return text;
}

}  // namespace

/// With "-copies=N" N changed copies are tried as well; all other arguments are files and folders.
int main(int argc, char** argv) {
  int copies = 0;
  TInputs seeds;
  for (int i = 1; i < argc; ++i) {
    if (std::sscanf(argv[i], "-copies=%d", &copies) != 1) Read(argv[i], seeds);
  }
  if (seeds.empty()) return 1;  // a corpus without a seed tests nothing
  std::ranges::sort(seeds);     // the same copies everywhere
  for (const std::string& seed : seeds) Run(seed);
  std::mt19937 random(1);
  for (int i = 0; i < copies; ++i) Run(Changed(seeds, random));
  std::printf("%zu seeds, %d copies\n", seeds.size(), copies);
  return 0;
}
