// Prints its arguments as the layer gives them, each closed by a NUL.
#include <Program.h>

#include <cstdio>

int main() {
  for (const std::string& argument : quarda::platform::ProgramArguments()) {
    std::fwrite(argument.c_str(), 1, argument.size() + 1, stdout);
  }
}
