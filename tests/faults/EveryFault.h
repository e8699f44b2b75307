// Runs a path through the libraries once for each of its allocations, which fails.
#pragma once

#include <functional>
#include <new>
#include <stdexcept>

#include "FailingMemory.h"

/// One run of a path. What is done by tries() meets the fault; all else has memory.
class Fault {
 public:
  class CheckFailed : public std::logic_error {
    using std::logic_error::logic_error;
  };

  /// Does `step`. False when it threw std::bad_alloc; there is memory again then. Everything else
  /// that it throws is thrown on.
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
  /// As tries(), for a step that may stop the process by abort.
  template <class Step>
  bool triesOrAborts(Step&& step) {
    mayAbort(true);
    bool const isDone = tries(step);
    mayAbort(false);
    return isDone;
  }
  /// Does `step`, which must not need memory.
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
  /// Each run is a process of its own: the path may abort, or leaves its mark on the process.
  bool inChild = false;
  /// What the path takes once, it keeps until the process ends.
  bool keepsMemory = false;
};

/// Runs `path` for n = 1, 2, ... until n is beyond its allocations, with the n-th failing and with
/// it and all later ones failing; and that again with the slabs so full that they have room for 0,
/// 1, ... more objects of each size. The test fails when a run fails a check, throws, leaves memory
/// behind, or ends the process other than by the abort that it announced. Prints and records how
/// many faults it survived, and how many of them by abort.
void everyFault(const char* name, const std::function<void(Fault&)>& path,
                PathOptions options = {});
