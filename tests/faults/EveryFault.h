// Runs a path through the libraries once for each of its allocations. That allocation fails.
#pragma once

#include <functional>
#include <new>
#include <stdexcept>

#include "FailingMemory.h"

/// One run of a path. The fault can hit only the steps done by tries(). All else has memory.
class Fault {
 public:
  class CheckFailed : public std::logic_error {
    using std::logic_error::logic_error;
  };

  /// Does `step`. False if it threw std::bad_alloc; from then on there is memory again. Passes on
  /// every other exception.
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
  /// Does `step` and checks that it needs no memory.
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
  /// The runs have a process of their own, because the path may abort. After each abort comes a new
  /// process.
  bool inChild = false;
  /// The path keeps memory until the process ends. In a child, each run then has its own process.
  bool keepsMemory = false;
};

/// Runs `path` for n = 1, 2, ... up to the number of its allocations: once with the n-th allocation
/// failing, and once with it and all later ones failing. Repeats that with slabs that are full
/// except for room for 0, 1, ... more objects of each size.
///
/// The test fails if a run fails a check, throws, leaves memory behind, or ends the process in
/// another way than by the abort that it announced. Prints and records the number of faults
/// survived, and how many of them by abort.
void everyFault(const char* name, const std::function<void(Fault&)>& path,
                PathOptions options = {});
