// Saves the counts of a process that an assertion stops, as death tests do. Each library has its
// own counts, so each has this.
#include <csignal>

extern "C" void __gcov_dump();

namespace {

struct sigaction before;

void saveCounts(int) {
  __gcov_dump();
  sigaction(SIGABRT, &before, nullptr);  // abort() raises it once more; `before` may save others'
  raise(SIGABRT);
}

[[gnu::constructor]] void saveCountsAtAbort() {
  struct sigaction action = {};
  action.sa_handler = saveCounts;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGABRT, &action, &before);
}

}  // namespace
