// A library that tests load: it tells where it lies.
#include <Program.h>

#include <cstring>

extern "C" void SampleModulePath(char* path, size_t size) {
  std::strncpy(path, quarda::platform::ModulePath().c_str(), size);
}
