// tcamshow as a whole, with every allocation failing in turn.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "../tcamshow/Process.h"
#include "../tcamshow/TemporaryFile.h"

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr std::uint64_t stride = 37;  // each run starts a process, which takes time
#else
constexpr std::uint64_t stride = 1;
#endif

struct Outcome {
  ProcessResult result;
  std::uint64_t seen = 0;
  std::uint64_t failed = 0;
};

Outcome runWithFault(const std::vector<std::string>& arguments, std::uint64_t at, bool all) {
  TemporaryFile const report;
  // The program has the environment of this one.
  ::setenv("FAULT_AT", std::to_string(at).c_str(), 1);
  ::setenv("FAULT_REPORT", report.path().c_str(), 1);
  if (all) {
    ::setenv("FAULT_ALL", "1", 1);
  } else {
    ::unsetenv("FAULT_ALL");
  }
  std::vector<std::string> whole = {TCAMSHOW_PROGRAM};
  whole.insert(whole.end(), arguments.begin(), arguments.end());
  Outcome outcome{.result = runProcess(whole)};
  std::ifstream(report.path()) >> outcome.seen >> outcome.failed;
  return outcome;
}

TEST(ProgramFaults, EveryFailureIsToldOnStandardErrorAndByTheStatus) {
  std::vector<std::string> const arguments = {"ip", TCAMSHOW_GOLDEN "/tables.jsonl"};
  Outcome const sound = runWithFault(arguments, ~std::uint64_t{0}, false);
  ASSERT_EQ(sound.result.status, 0);
  ASSERT_GT(sound.seen, 0U);
  std::uint64_t survived = 0;
  for (bool const all : {false, true}) {
    for (std::uint64_t at = 1; at <= sound.seen; at += stride) {
      SCOPED_TRACE(std::to_string(at) + (all ? " and all later" : ""));
      Outcome const outcome = runWithFault(arguments, at, all);
      ASSERT_GT(outcome.failed, 0U);
      ++survived;
      if (outcome.result.status == 0) {
        // The failed allocation was not needed: it was for the parser's own buffer.
        ASSERT_EQ(outcome.result.err, "");
        ASSERT_EQ(outcome.result.out, sound.result.out);
        continue;
      }
      ASSERT_EQ(outcome.result.status, 1);
      ASSERT_EQ(outcome.result.err, "tcamshow: out of memory\n");
      ASSERT_TRUE(sound.result.out.starts_with(outcome.result.out)) << outcome.result.out;
    }
  }
  std::printf("faults: tcamshow as a whole: %llu survived, 0 of them by abort\n",
              static_cast<unsigned long long>(survived));
  RecordProperty("faults: tcamshow as a whole", std::to_string(survived));
}

}  // namespace
