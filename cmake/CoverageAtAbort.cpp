// Saves the line counts of a process that an assertion stops, as in a death test. Each library
// keeps its own counts, so each contains this file.
#include <csignal>

extern "C" void __gcov_dump();

namespace {

struct sigaction before;

void saveCounts(int) {
  __gcov_dump();
  sigaction(SIGABRT, &before, nullptr);  // abort() raises it again; `before` may save more
  raise(SIGABRT);
}

[[gnu::constructor]] void saveCountsAtAbort() {
  struct sigaction action = {};
  action.sa_handler = saveCounts;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGABRT, &action, &before);
}

}  // namespace
