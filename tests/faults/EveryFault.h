// Runs a path through the libraries once for each of its allocations. That allocation fails.
#pragma once

#include <functional>
#include <new>
#include <stdexcept>

#include "FailingMemory.h"

/// One run of a path. An allocation can fail only inside tries(). Outside of it no allocation
/// fails.
class Fault {
 public:
  class CheckFailed : public std::logic_error {
    using std::logic_error::logic_error;
  };

  /// Runs `step`. Returns false if it threw std::bad_alloc. After that, no allocation fails any
  /// more. Passes on every other exception.
  template <class Step>
  bool tries(Step&& step) {
    if (isOver_) {
      step();
      return true;
    }
    FailingMemory::resume();
    try {
      step();
      FailingMemory::pause();
      return true;
    } catch (const std::bad_alloc&) {
      FailingMemory::pause();
      check(FailingMemory::failed() != 0, "std::bad_alloc comes from an allocation that failed");
      isOver_ = true;
      return false;
    } catch (...) {
      FailingMemory::pause();
      throw;
    }
  }
  /// Same as tries(), for a step that may abort the process.
  template <class Step>
  bool triesOrAborts(Step&& step) {
    mayAbort(true);
    bool const isDone = tries(step);
    mayAbort(false);
    return isDone;
  }
  /// Runs `step` and checks that it allocates nothing.
  template <class Step>
  void withoutMemory(Step&& step) {
    auto const before = FailingMemory::refused();
    FailingMemory::exhaustedIs(true);
    step();
    FailingMemory::exhaustedIs(false);
    bool const none = FailingMemory::refused() == before;
    check(none, "the step takes no memory");
  }
  void check(bool holds, const char* what) const {
    if (!holds) throw CheckFailed(what);
  }

 private:
  static void mayAbort(bool may) noexcept;

  bool isOver_ = false;
};

struct PathOptions {
  /// Runs the path in a child process, because it may abort. After an abort, a new child goes on.
  bool inChild = false;
  /// The path keeps memory until the process ends. With inChild, each run then has its own child.
  bool keepsMemory = false;
};

/// Runs `path` twice for each of its allocations, n = 1, 2, ...: once the n-th allocation fails,
/// and once the n-th and all later ones fail. Repeats this with slabs that have room for only 0, 1,
/// ... more objects of each size.
///
/// The test fails if a run fails a check, throws, leaves memory behind, or ends the process without
/// an announced abort (triesOrAborts). Prints the number of faults survived, and how many of them
/// by abort. Records the number of faults survived as a property of the test.
void everyFault(const char* name, const std::function<void(Fault&)>& path,
                PathOptions options = {});
