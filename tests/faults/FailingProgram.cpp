// main() of a program that fails one of its allocations; the program's own is called tcamshowMain.
#include <cstdio>
#include <cstdlib>

#include "FailingMemory.h"

int tcamshowMain(int argc, char** argv);

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

// The environment: FAULT_AT is the number of the allocation, from 1; FAULT_ALL makes all later ones
// fail too; FAULT_REPORT names a file that gets the number of allocations and of those that failed.
int main(int argc, char** argv) {
  const char* const at = std::getenv("FAULT_AT");
  report = std::getenv("FAULT_REPORT");
  if (at == nullptr || report == nullptr || std::atexit(reportWrite) != 0) return 99;
  FailingMemory::failAt(std::strtoull(at, nullptr, 10), std::getenv("FAULT_ALL") != nullptr);
  FailingMemory::resume();
  return tcamshowMain(argc, argv);
}
