// Ptr: the counted pointer to a Node.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace Halvo {

/// A pointer that holds one reference to a Node, or is null.
///
///     Halvo::Ptr<VelmorTcamEntryShadow> shadow = Halvo::makePtr<VelmorTcamEntryShadow>(17);
///     Halvo::Ptr<const VelmorTcamEntryShadow> reader = shadow;   // count 2
///
/// To make a Ptr from a plain pointer, use adopt() or share(): the name says what happens to the
/// count. There is no constructor for it. A new object has a count of one: `Ptr<T>(new T)` would
/// raise it to two, and the object would never be destroyed.
///
///     auto made = Halvo::Ptr<Group>::adopt(new Group(7));   // count 1: takes over the first one
///     auto self = Halvo::Ptr<Group>::share(this);           // count goes up by one
///
/// Dereferencing a null Ptr is an error of the program. It is not checked: the access stops the
/// process on the spot.
///
/// Threads: one thread at a time may use a Ptr object. Several threads may use different Ptrs to
/// one object while ThreadControl's switch is on.
template <class T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  /// Use adopt() or share(), as described above.
  explicit Ptr(T* object) = delete;
  /// Takes over a reference that the caller holds, for example the first one of a new object.
  /// `object` may be null.
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

  // All assignments store the new value before they release the old reference: the old object's
  // destructor may look at this pointer.
  Ptr& operator=(const Ptr& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    // cppcheck-suppress accessMoved  // swap is called on a new object
    Ptr(std::move(other)).swap(*this);
    return *this;
  }
  Ptr& operator=(std::nullptr_t) noexcept {
    Ptr().swap(*this);
    return *this;
  }

  T* operator->() const noexcept { return object_; }
  // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): the caller checks for null
  T& operator*() const noexcept { return *object_; }
  T* get() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Passes the reference to the caller and becomes null.
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

// A constant such as 17 arrives here as an int: the compiler no longer sees that it is not
// negative. It would warn wherever a constructor takes an unsigned number, and the caller could do
// nothing about it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
/// Makes a T and returns its only Ptr (count one).
template <class T, class... Args>
[[nodiscard]] Ptr<T> makePtr(Args&&... args) {
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}
#pragma GCC diagnostic pop

/// Casts to a Ptr to the derived class T; null when the object is not a T.
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
