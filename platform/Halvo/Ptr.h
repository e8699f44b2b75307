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
/// Following a null Ptr is a fault of the program and stops it on the spot; there is no check.
/// Threads: one Ptr object is for one thread at a time; distinct Ptrs to one object may be used
/// from many threads while ThreadControl's switch is on.
template <class T>
class Ptr {
 public:
  using element_type = T;

  constexpr Ptr() noexcept = default;
  constexpr Ptr(std::nullptr_t) noexcept {}
  /// Takes a reference of its own on `object`, which may be null.
  explicit Ptr(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->refNew();
  }
  /// Takes over a reference that the caller holds, the one of a fresh object say.
  [[nodiscard]] static Ptr adopt(T* object) noexcept {
    Ptr ptr;
    ptr.object_ = object;
    return ptr;
  }

  Ptr(const Ptr& other) noexcept : Ptr(other.object_) {}
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ptr(const Ptr<U>& other)
  noexcept : Ptr(static_cast<T*>(other.get())) {}
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

/// A new T, held by the pointer that is returned (count one).
template <class T, class... Args>
[[nodiscard]] Ptr<T> makePtr(Args&&... args) {
  return Ptr<T>::adopt(new T(std::forward<Args>(args)...));
}

/// The pointer as one to a derived class: null when the object is not of that class.
template <class T, class U>
[[nodiscard]] Ptr<T> ptrCast(const Ptr<U>& ptr) noexcept {
  return Ptr<T>(dynamic_cast<T*>(ptr.get()));
}

}  // namespace Halvo

template <class T>
struct std::hash<Halvo::Ptr<T>> {
  std::size_t operator()(const Halvo::Ptr<T>& ptr) const noexcept {
    return std::hash<T*>{}(ptr.get());
  }
};
