// A program that ends by an unhandled error prints its class, for which the C++ runtime brings a
// reader of mangled names: larger than all of our own start-up code, in a process that has nowhere
// to print to. A program with the runtime linked in just ends.
#include <cstdlib>

namespace __gnu_cxx {

[[noreturn]] void __verbose_terminate_handler();  // of the runtime, in no header

void __verbose_terminate_handler() { std::abort(); }

}  // namespace __gnu_cxx
