// Node: the base of every reference-counted object.
#pragma once

#include <atomic>

#include "Halvo/ThreadControl.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {
struct TypeDescriptor;
}

namespace Halvo {

/// A reference-counted object.
///
/// Invariant: a new object has a count of one. That reference belongs to its creator; makePtr
/// passes it to the Ptr that it returns. When the count falls to zero, lastUserGone() runs once. By
/// default it deletes the object.
///
/// Threads: while ThreadControl's switch is on, any thread may take and release references. The
/// thread that releases the last one sees all that other threads did before they released theirs.
/// While the switch is off, one thread at a time may use the references of an object. The flag word
/// is not synchronised: it belongs to the thread that builds and destroys the object.
///
/// The virtual operations have fixed slots, in this order: destructor, lastUserGone, publisher,
/// typeData, then the operations of derived classes.
///
/// A node is not copied: two owners would share its children, and a copy of a base class would lose
/// the rest of the object. A class that is meant to be copied declares a copy constructor that
/// initialises its base with Node(). The copy is then a separate object, with a count of one and no
/// flags.
///
/// A node may live on the stack or in a member. No Ptr to it may outlive it: its first reference is
/// never released, so the count does not decide when it dies.
class VELMOR_PLATFORM_API Node {
 public:
  /// Flag: observers are told about changes of this object. The destructor of each formatter class
  /// clears it, so that observers hear nothing about a half-destroyed object.
  static constexpr U32 flagNotify = 0x20000000;
  /// Flag: the destructor of the object's own class has begun. Destructors of container nodes set
  /// it before they empty their collections, so that code which runs meanwhile can see it.
  static constexpr U32 flagBeingDestroyed = 0x40000000;

  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  /// Destroys the object. Call it directly only on an object that was constructed in place.
  virtual ~Node();
  /// Called when the count falls to zero; the default deletes the object. An override that keeps
  /// the object, as a pool does, must take a reference again before it hands the object out.
  virtual void lastUserGone();
  /// The object that tells observers about changes of this one. The default is null: nobody tells
  /// them.
  virtual Node* publisher() const;
  /// The type descriptor of the object's own class; null for a class that has none.
  virtual const Zel::TypeDescriptor* typeData() const;

  /// Takes one reference.
  void refNew() const noexcept { counterAdd(useCount_, U32{1}); }
  /// Releases one reference. When the count falls to zero, lastUserGone() runs.
  void refDelete() const noexcept {
    if (counterDrop(useCount_) == 0) const_cast<Node*>(this)->lastUserGone();
  }
  /// The number of references. Only for display: while other threads run, it may be out of date at
  /// once.
  U32 useCount() const noexcept { return useCount_.load(std::memory_order_relaxed); }

  U32 flags() const noexcept { return flags_; }
  bool flag(U32 mask) const noexcept { return (flags_ & mask) != 0; }
  void flagSet(U32 mask) noexcept { flags_ |= mask; }
  void flagClear(U32 mask) noexcept { flags_ &= ~mask; }

 protected:
  Node() noexcept = default;

 private:
  mutable std::atomic<U32> useCount_{1};
  U32 flags_ = 0;
};

}  // namespace Halvo
