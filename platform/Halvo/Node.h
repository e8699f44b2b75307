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

/// An object that lives by reference count.
///
/// Invariant: an object is born with a count of one, which belongs to whoever made it (makePtr
/// hands that one to the Ptr it returns). When the count falls to zero lastUserGone() runs, once,
/// and by default deletes the object.
///
/// Threads: references may be taken and given back from any thread while ThreadControl's switch is
/// on, and what a thread did before it gave its own back is seen by the one that ends the object;
/// with the switch off all of an object's references are for one thread at a time. The flag word is
/// not synchronised: it belongs to the thread that builds and destroys the object.
///
/// The virtual operations stand in a fixed slot order: destructor, lastUserGone, publisher,
/// typeData; those of derived classes follow.
///
/// A node is not copied: two owners would share its children, and a copy of a base class would lose
/// the rest. A class that is meant to be copied declares a copy constructor, which begins with
/// Node(): the copy is an object of its own, with a count of one and no flags.
///
/// An object on the stack or in a member is allowed; no Ptr to it may outlive it, since its own
/// count of one is never given back.
class VELMOR_PLATFORM_API Node {
 public:
  /// Flag: changes of this object are to be told to observers. A formatter clears it as it goes,
  /// at each level of its class, so that nobody is told about an object that is half gone.
  static constexpr U32 flagNotify = 0x20000000;
  /// Flag: the destructor of the object's own class has begun. Set first thing by the destructors
  /// of container nodes, so that whatever the emptying of their collections reaches can tell.
  static constexpr U32 flagBeingDestroyed = 0x40000000;

  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  /// Destroys the object. Use it directly only on an object that was made in place.
  virtual ~Node();
  /// Called when the count falls to zero; the default deletes the object. An override that keeps
  /// the object alive (a pool, say) must take a reference again before it hands it out.
  virtual void lastUserGone();
  /// The object that tells observers of this one's changes: by default nobody, null.
  virtual Node* publisher() const;
  /// The descriptor of the object's own class; null for a class that is not described.
  virtual const Zel::TypeDescriptor* typeData() const;

  /// Takes one reference.
  void refNew() const noexcept { counterAdd(useCount_, U32{1}); }
  /// Gives one reference back; the last one ends the object.
  void refDelete() const noexcept {
    if (counterDrop(useCount_) == 0) const_cast<Node*>(this)->lastUserGone();
  }
  /// The references now held. A number to look at, not to decide by while threads run.
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
