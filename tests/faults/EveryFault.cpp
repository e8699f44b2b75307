#include "EveryFault.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "Sobrel.h"

namespace {

volatile sig_atomic_t abortIsRight = 0;

enum ChildExit { exitSurvived = 0, exitBeyond = 10, exitFailed = 11, exitWrongAbort = 12 };

/// Fills all slabs, except for room for a given number of objects of each size.
class FilledSlabs {
 public:
  explicit FilledSlabs(std::size_t room) {
    Sobrel::slabTrim();
    for (std::size_t size = 8; size <= Sobrel::largestSlabObject; size += size < 256 ? 8 : 16) {
      std::vector<void*> objects;
      for (;;) {
        auto const before = Sobrel::slabUsage();
        void* const object = Sobrel::slabAlloc(size);
        auto const after = Sobrel::slabUsage();
        if (after.slabs != before.slabs || after.liveBytes == before.liveBytes) {
          Sobrel::slabFree(object, size);
          break;
        }
        objects.push_back(object);
      }
      for (std::size_t i = 0; i < room && !objects.empty(); ++i) {
        Sobrel::slabFree(objects.back(), size);
        objects.pop_back();
      }
      held_.emplace_back(size, std::move(objects));
    }
    Sobrel::slabTrim();
  }
  ~FilledSlabs() {
    for (auto const& [size, objects] : held_) {
      for (void* const object : objects) Sobrel::slabFree(object, size);
    }
    Sobrel::slabTrim();
  }
  FilledSlabs(const FilledSlabs&) = delete;
  FilledSlabs& operator=(const FilledSlabs&) = delete;

 private:
  std::vector<std::pair<std::size_t, std::vector<void*>>> held_;
};

/// Whether objects come from slabs. Not with a sanitizer, which tracks each object.
bool slabsAreUsed() {
  auto const before = Sobrel::slabUsage().liveBytes;
  void* const object = Sobrel::slabAlloc(8);
  bool const used = Sobrel::slabUsage().liveBytes != before;
  Sobrel::slabFree(object, 8);
  return used;
}

/// Runs the path once. Returns false if it has fewer than `at` allocations. `problem` is empty if
/// the run was good.
bool runOnce(const std::function<void(Fault&)>& path, std::uint64_t at, bool all, bool keepsMemory,
             std::string& problem) {
  Sobrel::slabTrim();
  auto const slabsBefore = Sobrel::slabUsage().liveBytes;
  auto const liveBefore = FailingMemory::live();
  FailingMemory::failAt(at, all);
  try {
    Fault fault;
    path(fault);
  } catch (const std::exception& error) {
    FailingMemory::pause();
    problem = error.what();
  }
  FailingMemory::pause();
  bool const reached = FailingMemory::failed() != 0;
  if (!problem.empty() || keepsMemory) return reached;
  if (FailingMemory::live() != liveBefore) problem = "memory is left behind";
  if (Sobrel::slabUsage().liveBytes != slabsBefore) problem = "slab objects are left behind";
  return reached;
}

/// The result of one or more runs, for allocations in ascending order.
struct Runs {
  std::uint64_t last = 0;  ///< the allocation of the last run
  bool isBeyond = false;   ///< the path has fewer allocations than `last`
  bool isAborted = false;  ///< the last run ended its process by abort
  std::string problem{};   ///< of the last run; empty if there was none
};

/// One run in this process.
Runs runHere(const std::function<void(Fault&)>& path, std::uint64_t at, bool all,
             const PathOptions& options) {
  Runs runs{.last = at};
  runs.isBeyond = !runOnce(path, at, all, options.keepsMemory, runs.problem);
  return runs;
}

/// Runs the path in a child process, for allocation `at` and later ones, until a run aborts. With
/// keepsMemory, makes only one run.
Runs runInChild(const std::function<void(Fault&)>& path, std::uint64_t at, bool all,
                const PathOptions& options) {
  // Shared with the child, which stores the number of its present allocation here.
  static auto* const reached = static_cast<volatile std::uint64_t*>(::mmap(
      nullptr, sizeof(std::uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  if (reached == MAP_FAILED) return {.last = at, .problem = "mmap failed"};
  *reached = at;
  std::fflush(nullptr);
  pid_t const child = ::fork();
  if (child < 0) return {.last = at, .problem = "fork failed"};
  if (child == 0) {
    std::set_terminate([] { ::_exit(exitWrongAbort); });
    ::signal(SIGABRT, [](int) {
      if (abortIsRight == 0) ::_exit(exitWrongAbort);
      ::signal(SIGABRT, SIG_DFL);
      ::raise(SIGABRT);
    });
    for (std::uint64_t run = at;; ++run) {
      *reached = run;
      Runs const runs = runHere(path, run, all, options);
      if (!runs.problem.empty()) {
        std::fprintf(stderr, "%s\n", runs.problem.c_str());
        ::_exit(exitFailed);
      }
      if (runs.isBeyond) ::_exit(exitBeyond);
      if (options.keepsMemory) ::_exit(exitSurvived);
    }
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  Runs runs{.last = *reached};
  runs.isAborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
  if (runs.isAborted) return runs;
  int const code = WIFEXITED(status) ? WEXITSTATUS(status) : exitFailed;
  runs.isBeyond = code == exitBeyond;
  if (code == exitWrongAbort) {
    runs.problem = "the process stopped where it must not";
  } else if (code != exitBeyond && code != exitSurvived) {
    runs.problem = "the child ended with status " + std::to_string(status);
  }
  return runs;
}

}  // namespace

void Fault::mayAbort(bool may) noexcept { abortIsRight = may ? 1 : 0; }

void everyFault(const char* name, const std::function<void(Fault&)>& path, PathOptions options) {
  // The first run has no fault. It makes the objects that live until the process ends.
  if (!options.keepsMemory) {
    std::string problem;
    runOnce(path, ~std::uint64_t{0}, false, true, problem);
    ASSERT_EQ(problem, "") << name << " without a fault";
  }
  std::uint64_t survived = 0;
  std::uint64_t aborts = 0;
  std::size_t const rooms = slabsAreUsed() ? 5 : 1;
  for (std::size_t room = 0; room < rooms; ++room) {
    FilledSlabs const slabs(room);
    for (bool const all : {false, true}) {
      for (std::uint64_t at = 1;;) {
        Runs const runs =
            options.inChild ? runInChild(path, at, all, options) : runHere(path, at, all, options);
        ASSERT_EQ(runs.problem, "") << name << ": allocation " << runs.last
                                    << (all ? " and all later" : "") << ", room for " << room;
        survived += runs.last - at;
        if (runs.isBeyond) break;
        ++survived;
        if (runs.isAborted) ++aborts;
        at = runs.last + 1;
      }
    }
  }
  EXPECT_GT(survived, 0U) << name << " met no fault";
  std::printf("faults: %s: %llu survived, %llu of them by abort\n", name,
              static_cast<unsigned long long>(survived), static_cast<unsigned long long>(aborts));
  testing::Test::RecordProperty(std::string("faults: ") + name, std::to_string(survived));
}
