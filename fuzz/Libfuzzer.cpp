// The entry point for libFuzzer in a program that holds one target.
#include "Target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  velmorfuzz::Input in(data, size);
  velmorfuzz::Target::first->run(in);
  return 0;
}
