// What scanners, filters and hooks are in the tests: the name under which a test links it into the
// base folder says what it does. Built without sanitizers, which would turn the crash into an exit
// code.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

int main(int count, char** arguments) {
  const std::filesystem::path program = arguments[0];
  const std::string name = program.filename().string();
  const std::string argument = count > 1 ? arguments[1] : "";
  const auto file = [&](const char* other) { return program.parent_path() / other; };
  if (name == "where") {
    std::ofstream(file("shown")) << std::filesystem::current_path().string();
    return 5;
  }
  if (name == "sleep") {  // and does not end before when it is asked to
    std::signal(SIGTERM, SIG_IGN);
    std::this_thread::sleep_for(std::chrono::seconds(std::stoi(argument)));
    return 5;
  }
  if (name == "slow") std::this_thread::sleep_for(std::chrono::milliseconds(200));
  std::ofstream(file("ran"), std::ios::app | std::ios::binary) << argument << '\n';
  if (name == "crash") __builtin_trap();
  return std::atoi(name.c_str());  // 0 for every other name
}
