// Ptr: the counted pointer to a Node.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Halvo {

/// A pointer that holds one reference on a Node, or null.
///
///     Halvo::Ptr<VelmorTcamEntryShadow> shadow = Halvo::makePtr<VelmorTcamEntryShadow>(17);
///     Halvo::Ptr<const VelmorTcamEntryShadow> reader = shadow;   // count 2
///
/// A plain pointer becomes a Ptr by a name that says what happens to the count. There is no
/// constructor for it: an object is born with a count of one, so `Ptr<T>(new T)` would count to two
/// and never end the object.
///
///     auto made = Halvo::Ptr<Group>::adopt(new Group(7));   // count 1: takes over the first one
///     auto self = Halvo::Ptr<Group>::share(this);           // count goes up by one
///
/// Following a null Ptr is a fault of the program and stops it on the spot; there is no check.
/// Threads: one Ptr object is for one thread at a time; distinct Ptrs to one object may be used
/// from many threads while ThreadControl's switch is on.
template <class T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  /// Say adopt() or share(): see above.
  explicit Ptr(T* object) = delete;
  /// Takes over a reference that the caller holds, such as the first one of a new object. `object`
  /// may be null.
  [[nodiscard]] static Ptr adopt(T* object) noexcept {
    Ptr ptr;
    ptr.object_ = object;
    return ptr;
  }
  /// Takes one more reference on an object that others hold. `object` may be null.
  [[nodiscard]] static Ptr share(T* object) noexcept {
    if (object != nullptr) object->refNew();
    return adopt(object);
  }

  Ptr(const Ptr& other) noexcept : object_(other.object_) {
    if (object_ != nullptr) object_->refNew();
  }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(const Ptr<U>& other)
  noexcept : object_(other.get()) {
    if (object_ != nullptr) object_->refNew();
  }
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.detach()) {}
  ~Ptr() {
    if (object_ != nullptr) object_->refDelete();
  }

  // Both assignments put the new value in place before the old object's reference goes: its
  // destructor may look at this very pointer.
  Ptr& operator=(const Ptr& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    // cppcheck-suppress accessMoved  // that is a new object
    Ptr(std::move(other)).swap(*this);
    return *this;
  }
  Ptr& operator=(std::nullptr_t) noexcept {
    Ptr().swap(*this);
    return *this;
  }

  T* operator->() const noexcept { return object_; }
  // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): the caller's, as a pointer's
  T& operator*() const noexcept { return *object_; }
  T* get() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Gives the reference to the caller and becomes null.
  [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }
  void reset() noexcept { Ptr().swap(*this); }
  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }
  friend void swap(Ptr& a, Ptr& b) noexcept { a.swap(b); }

 private:
  T* object_ = nullptr;
};

template <class T, class U>
bool operator==(const Ptr<T>& a, const Ptr<U>& b) noexcept {
  return a.get() == b.get();
}
template <class T>
bool operator==(const Ptr<T>& a, std::nullptr_t) noexcept {
  return a.get() == nullptr;
}
template <class T>
std::strong_ordering operator<=>(const Ptr<T>& a, const Ptr<T>& b) noexcept {
  return std::compare_three_way{}(a.get(), b.get());
}

// The arguments of makePtr reach the constructor through a template, where a constant such as 17 is
// an int like any other. Its sign is known at the caller only, so there is nothing to warn of here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
/// A new T, held by the pointer that is returned (count one).
template <class T, class... Args>
[[nodiscard]] Ptr<T> makePtr(Args&&... args) {
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}
#pragma GCC diagnostic pop

/// The pointer as one to a derived class: null when the object is not of that class.
template <class T, class U>
[[nodiscard]] Ptr<T> ptrCast(const Ptr<U>& ptr) noexcept {
  return Ptr<T>::share(dynamic_cast<T*>(ptr.get()));
}

}  // namespace Halvo

template <class T>
struct std::hash<Halvo::Ptr<T>> {
  std::size_t operator()(const Halvo::Ptr<T>& ptr) const noexcept {
    return std::hash<T*>{}(ptr.get());
  }
};
