// main() of a program in which one allocation fails. The linker's --wrap=main calls it in place of
// the program's own main(), which is then named __real_main.
#include <cstdio>
#include <cstdlib>

#include "FailingMemory.h"

extern "C" int __real_main(int argc, char** argv);

namespace {

const char* report = nullptr;

void reportWrite() {
  FailingMemory::pause();
  if (std::FILE* const file = std::fopen(report, "w")) {
    std::fprintf(file, "%llu %llu", static_cast<unsigned long long>(FailingMemory::seen()),
                 static_cast<unsigned long long>(FailingMemory::failed()));
    std::fclose(file);
  }
}

}  // namespace

// Environment: FAULT_AT is the number of the allocation that fails, from 1. FAULT_ALL lets all
// later ones fail too. FAULT_REPORT names a file for the numbers of allocations and of failed ones.
extern "C" int __wrap_main(int argc, char** argv);
int __wrap_main(int argc, char** argv) {
  const char* const at = std::getenv("FAULT_AT");
  report = std::getenv("FAULT_REPORT");
  if (at == nullptr || report == nullptr || std::atexit(reportWrite) != 0) return 99;
  FailingMemory::failAt(std::strtoull(at, nullptr, 10), std::getenv("FAULT_ALL") != nullptr);
  FailingMemory::resume();
  return __real_main(argc, argv);
}
