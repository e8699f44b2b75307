// Attribute tables: each class has one table that describes its attributes, made at compile time.
//
// A table is in a source file, in its own namespace, where `Class` stands for the class:
//
//     namespace group {
//     using Class = Group;
//     constexpr auto attributes = Zel::attributeTable<130, 133>(   // first and last number
//         ZEL_KEY(groupId), ZEL_READ_WRITE(usedEntries), ZEL_QUEUE(name));
//     }
//
// Each row gives the name of an attribute. The row uses the functions that the class declares under
// that name:
//
// - A scalar: the reader <name>, and the writer <name>Is if it can be written.
// - A map: <name>Is, <name>(key), <name>Del, <name>DelAll, and <name>() for the collection.
// - A set: <name>Is, <name>Has, <name>Del, <name>DelAll, and <name>() for the collection.
// - A queue: <name>Enq, <name>Deq, <name>Front, <name>Back, <name>DelAll, and <name>() for the
//   collection.
// - An operation: the function <name>.
//
// Types, parameters and supported operations come from these declarations. A misspelt name does not
// compile. A table that lacks a row does not compile either: its last number is then not the stated
// one.
//
// Numbers go up from row to row. A queue takes two numbers: the first is for its element type, the
// second is its own.
//
// Threads: tables are constant data; safe from any thread. The class of an object says which
// threads may do operations on it.
#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Attribute.h"
#include "Zel/Types/Record.h"
#include "Zel/Types/TypeModule.h"
#include "Zel/Types/Value.h"

namespace Zel {

inline constexpr U32 firstValueAttribute = 2;   ///< the first attribute number of value types
inline constexpr U32 firstNodeAttribute = 130;  ///< the first attribute number of node types

namespace table {

using Arguments = std::span<const Value>;

[[noreturn]] VELMOR_PLATFORM_API void argumentCountWrong(const char* type, std::size_t expected,
                                                         std::size_t count);
[[noreturn]] VELMOR_PLATFORM_API void argumentCountWrong(const Attribute& attribute, Op op,
                                                         std::size_t expected, std::size_t count);
[[noreturn]] VELMOR_PLATFORM_API void argumentTypeWrong(const char* type, std::size_t index,
                                                        TypeRef expected, const Value& held);
[[noreturn]] VELMOR_PLATFORM_API void argumentTypeWrong(const Attribute& attribute, Op op,
                                                        std::size_t index, TypeRef expected,
                                                        const Value& held);
[[noreturn]] VELMOR_PLATFORM_API void setFalse(const Attribute& attribute);

template <class T>
struct Described_ {
  using type = T;
};
template <class T>
struct Described_<Halvo::Ptr<T>> {
  using type = std::remove_const_t<T>;
};
/// The descriptor of T; for a Ptr, of the class that it points to.
template <class T>
constexpr TypeRef typeRef() noexcept {
  if constexpr (std::is_void_v<T>) {
    return nullptr;
  } else {
    return &typeOf<typename Described_<T>::type>;
  }
}

template <class Class>
Class& objectOf(void* object) noexcept {
  if constexpr (std::is_base_of_v<Halvo::Node, Class>) {
    return *static_cast<Class*>(static_cast<Halvo::Node*>(object));
  } else {
    return *static_cast<Class*>(object);
  }
}

inline void expectCount(const Attribute& self, Op op, Arguments arguments, std::size_t count) {
  if (arguments.size() != count) [[unlikely]] {
    argumentCountWrong(self, op, count, arguments.size());
  }
}

/// Argument `index` as a T. A string or a record comes as a reference to the argument.
template <class T>
decltype(auto) argument(const Attribute& self, Op op, Arguments arguments, std::size_t index) {
  const Value& held = arguments[index];
  if (!held.is<T>()) [[unlikely]] {
    argumentTypeWrong(self, op, index, typeRef<T>(), held);
  }
  return held.as<T>();
}

template <class Class, class Read>
using ReadType = std::remove_cvref_t<std::invoke_result_t<Read, const Class&>>;

/// A scalar. Write is void when the scalar can only be read.
template <class Class, class Read, class Write>
struct Scalar {
  using Type = ReadType<Class, Read>;
  static void access(void* object, Op op, const Attribute& self, Arguments arguments,
                     Value& result) {
    auto& target = objectOf<Class>(object);
    if constexpr (!std::is_void_v<Write>) {
      if (op == Op::write) {
        expectCount(self, op, arguments, 1);
        Write{}(target, argument<Type>(self, op, arguments, 0));
        result.clear();
        return;
      }
    }
    if (!arguments.empty()) [[unlikely]] {
      argumentCountWrong(self, op, 0, arguments.size());
    }
    result = Read{}(std::as_const(target));
  }
};

/// Walks the collection that `Collection{}(object)` returns. It steps before it reads: the element
/// where it stood may have been removed, and the iterators of the collections can go on from there.
template <class Class, class Collection>
class ElementCursor : public Cursor {
  using Elements = std::remove_cvref_t<std::invoke_result_t<Collection, const Class&>>;
  using Iterator = typename Elements::const_iterator;

 public:
  explicit ElementCursor(const Class& object) : object_(Halvo::Ptr<const Class>::share(&object)) {}
  bool nextElement(Value& key, Value& element) override {
    const Elements& elements = Collection{}(*object_);
    if (isEnded_) return false;
    if (at_) {
      ++*at_;
    } else {
      at_.emplace(elements.begin());
    }
    if (*at_ == elements.end()) {
      isEnded_ = true;
      return false;
    }
    if constexpr (requires(const Iterator& at) { at.value(); }) {
      key = at_->key();
      element = at_->value();
    } else {
      key.clear();
      element = **at_;
    }
    return true;
  }

 private:
  Halvo::Ptr<const Class> const object_;
  std::optional<Iterator> at_;
  bool isEnded_ = false;
};

/// Walks a queue by the sequence numbers of its elements, which never change.
template <class Class, class Collection>
class QueueCursor : public Cursor {
  using Queue = std::remove_cvref_t<std::invoke_result_t<Collection, const Class&>>;

 public:
  explicit QueueCursor(const Class& object)
      : object_(Halvo::Ptr<const Class>::share(&object)),
        at_(queue().begin()),
        sequence_(front()),
        left_(queue().size()) {}
  bool nextElement(Value& key, Value& element) override {
    if (left_ == 0 || queue().empty()) return false;
    if (U32 const gone = front() - sequence_; static_cast<S32>(gone) > 0) {
      if (gone >= left_) {
        left_ = 0;
        return false;
      }
      left_ -= gone;
      sequence_ += gone;
      at_ = queue().begin();
    }
    key.clear();
    element = *at_;
    ++at_;
    ++sequence_;
    --left_;
    return true;
  }

 private:
  const Queue& queue() const noexcept { return Collection{}(*object_); }
  // The sequence number of the front element.
  U32 front() const noexcept {
    const auto* const block = queue().firstBlock();
    return block == nullptr ? 0 : block->sequence() + block->firstIndex();
  }

  Halvo::Ptr<const Class> const object_;
  typename Queue::const_iterator at_;
  U32 sequence_;  // the sequence number of the element at at_
  U32 left_;
};

template <class CursorType, class Class>
Halvo::Ptr<Cursor> cursorOver(const Class& object) {
  return Halvo::makePtr<CursorType>(object);
}

template <class Class, class Collection, class Is, class Lookup, class Del, class DelAll>
struct Map {
  using Children = ReadType<Class, Collection>;
  using Key = typename Children::Key;
  static void access(void* object, Op op, const Attribute& self, Arguments arguments,
                     Value& result) {
    auto& target = objectOf<Class>(object);
    bool const takesKey = op == Op::createOrGet || op == Op::lookup || op == Op::del;
    expectCount(self, op, arguments, takesKey ? 1 : 0);
    switch (op) {
      case Op::createOrGet:
        result = Is{}(target, argument<Key>(self, op, arguments, 0));
        break;
      case Op::lookup:
        result = Lookup{}(std::as_const(target), argument<Key>(self, op, arguments, 0));
        break;
      case Op::del:
        result = Del{}(target, argument<Key>(self, op, arguments, 0));
        break;
      case Op::delAll:
        DelAll{}(target);
        result.clear();
        break;
      case Op::count:
        result = Collection{}(std::as_const(target)).size();
        break;
      default:
        result = cursorOver<ElementCursor<Class, Collection>>(target);
        break;
    }
  }
};

template <class Class, class Collection, class Has, class Is, class Del, class DelAll>
struct Set {
  using Element = typename ReadType<Class, Collection>::RecordType;
  static void access(void* object, Op op, const Attribute& self, Arguments arguments,
                     Value& result) {
    auto& target = objectOf<Class>(object);
    bool const takesElement = op == Op::has || op == Op::del;
    expectCount(self, op, arguments, op == Op::insert ? 2 : takesElement ? 1 : 0);
    switch (op) {
      case Op::has:
        result = Has{}(std::as_const(target), argument<Element>(self, op, arguments, 0));
        break;
      case Op::insert: {
        const auto& element = argument<Element>(self, op, arguments, 0);
        if (!argument<bool>(self, op, arguments, 1)) setFalse(self);
        Is{}(target, element);
        result.clear();
        break;
      }
      case Op::del:
        result = Del{}(target, argument<Element>(self, op, arguments, 0));
        break;
      case Op::delAll:
        DelAll{}(target);
        result.clear();
        break;
      case Op::count:
        result = Collection{}(std::as_const(target)).size();
        break;
      default:
        result = cursorOver<ElementCursor<Class, Collection>>(target);
        break;
    }
  }
};

template <class Class, class Collection, class Enq, class Deq, class Front, class Back,
          class DelAll>
struct Queue {
  using Element = typename ReadType<Class, Collection>::value_type;
  static void access(void* object, Op op, const Attribute& self, Arguments arguments,
                     Value& result) {
    auto& target = objectOf<Class>(object);
    expectCount(self, op, arguments, op == Op::enqueue ? 1 : 0);
    switch (op) {
      case Op::enqueue:
        Enq{}(target, argument<Element>(self, op, arguments, 0));
        result.clear();
        break;
      case Op::dequeue:
        result = Deq{}(target);
        break;
      case Op::front:
        result = Front{}(std::as_const(target));
        break;
      case Op::back:
        result = Back{}(std::as_const(target));
        break;
      case Op::delAll:
        DelAll{}(target);
        result.clear();
        break;
      case Op::count:
        result = Collection{}(std::as_const(target)).size();
        break;
      default:
        result = cursorOver<QueueCursor<Class, Collection>>(target);
        break;
    }
  }
};

/// The parameters and the result of a member function.
template <class Function>
struct Signature;
template <class Class, class Result_, bool isConst_, class... Parameters>
struct SignatureOf {
  using Result = Result_;
  static constexpr bool isConst = isConst_;
  static constexpr std::size_t count = sizeof...(Parameters);
  static_assert(count <= Attribute::maxParameters);
  static constexpr void types([[maybe_unused]] Attribute& attribute) noexcept {
    [[maybe_unused]] std::size_t index = 0;
    ((attribute.parameterTypes[index++] = typeRef<std::remove_cvref_t<Parameters>>()), ...);
  }
  template <std::size_t... index>
  static Result call(auto function, auto& target, const Attribute& self,
                     [[maybe_unused]] Arguments arguments, std::index_sequence<index...>) {
    (expectObject<std::remove_cvref_t<Parameters>>(self, arguments, index), ...);
    return (target.*function)(
        argument<std::remove_cvref_t<Parameters>>(self, Op::invoke, arguments, index)...);
  }
  // Refuses a null pointer: most operations would stop the process at it.
  template <class T>
  static void expectObject(const Attribute& self, Arguments arguments, std::size_t index) {
    if constexpr (!std::is_same_v<typename Described_<T>::type, T>) {
      if (arguments[index].is<T>() && !arguments[index].as<T>()) {
        argumentTypeWrong(self, Op::invoke, index, typeRef<T>(), arguments[index]);
      }
    }
  }
};
template <class Class, class Result, class... Parameters>
struct Signature<Result (Class::*)(Parameters...)>
    : SignatureOf<Class, Result, false, Parameters...> {};
template <class Class, class Result, class... Parameters>
struct Signature<Result (Class::*)(Parameters...) const>
    : SignatureOf<Class, Result, true, Parameters...> {};
template <class Class, class Result, class... Parameters>
struct Signature<Result (Class::*)(Parameters...) noexcept>
    : SignatureOf<Class, Result, false, Parameters...> {};
template <class Class, class Result, class... Parameters>
struct Signature<Result (Class::*)(Parameters...) const noexcept>
    : SignatureOf<Class, Result, true, Parameters...> {};

template <class Class, auto function>
struct Operation {
  using Called = Signature<decltype(function)>;
  static void access(void* object, Op op, const Attribute& self, Arguments arguments,
                     Value& result) {
    auto& target = objectOf<Class>(object);
    expectCount(self, op, arguments, Called::count);
    constexpr std::make_index_sequence<Called::count> indexes;
    if constexpr (std::is_void_v<typename Called::Result>) {
      Called::call(function, target, self, arguments, indexes);
      result.clear();
    } else {
      result = Called::call(function, target, self, arguments, indexes);
    }
  }
};

template <class Class, class Read>
constexpr Attribute scalar(const char* name, AttributeKind kind, Read) {
  return {.name = name,
          .kind = kind,
          .operations = opSet(Op::read),
          .constOperations = opSet(Op::read),
          .owner = typeRef<Class>(),
          .type = typeRef<ReadType<Class, Read>>(),
          .access = &Scalar<Class, Read, void>::access};
}

template <class Class, class Read, class Write>
constexpr Attribute readWrite(const char* name, Read, Write) {
  return {.name = name,
          .kind = AttributeKind::readWrite,
          .operations = opSet(Op::read, Op::write),
          .constOperations = opSet(Op::read),
          .owner = typeRef<Class>(),
          .type = typeRef<ReadType<Class, Read>>(),
          .access = &Scalar<Class, Read, Write>::access};
}

template <class Class, class Collection, class Is, class Lookup, class Del, class DelAll>
constexpr Attribute map(const char* name, AttributeKind kind, Collection, Is, Lookup, Del, DelAll) {
  using Children = ReadType<Class, Collection>;
  return {
      .name = name,
      .kind = kind,
      .operations = opSet(Op::createOrGet, Op::lookup, Op::del, Op::delAll, Op::count, Op::iterate),
      .constOperations = opSet(Op::lookup, Op::count, Op::iterate),
      .owner = typeRef<Class>(),
      .type = typeRef<typename Children::ChildType>(),
      .keyType = typeRef<typename Children::Key>(),
      .access = &Map<Class, Collection, Is, Lookup, Del, DelAll>::access};
}

template <class Class, class Collection, class Has, class Is, class Del, class DelAll>
constexpr Attribute set(const char* name, Collection, Has, Is, Del, DelAll) {
  return {.name = name,
          .kind = AttributeKind::entrySet,
          .operations = opSet(Op::has, Op::insert, Op::del, Op::delAll, Op::count, Op::iterate),
          .constOperations = opSet(Op::has, Op::count, Op::iterate),
          .owner = typeRef<Class>(),
          .type = typeRef<typename ReadType<Class, Collection>::RecordType>(),
          .access = &Set<Class, Collection, Has, Is, Del, DelAll>::access};
}

template <class Class, class Collection, class Enq, class Deq, class Front, class Back,
          class DelAll>
constexpr Attribute queue(const char* name, Collection, Enq, Deq, Front, Back, DelAll) {
  return {.name = name,
          .kind = AttributeKind::queue,
          .operations = opSet(Op::enqueue, Op::dequeue, Op::front, Op::back, Op::delAll, Op::count,
                              Op::iterate),
          .constOperations = opSet(Op::front, Op::back, Op::count, Op::iterate),
          .owner = typeRef<Class>(),
          .type = typeRef<typename ReadType<Class, Collection>::value_type>(),
          .elementNumbers = 1,
          .access = &Queue<Class, Collection, Enq, Deq, Front, Back, DelAll>::access};
}

template <class Class, auto function>
constexpr Attribute operation(const char* name) {
  using Called = Signature<decltype(function)>;
  Attribute attribute{.name = name,
                      .kind = AttributeKind::operation,
                      .operations = opSet(Op::invoke),
                      .constOperations = Called::isConst ? opSet(Op::invoke) : OpSet{0},
                      .owner = typeRef<Class>(),
                      .type = typeRef<std::remove_cvref_t<typename Called::Result>>(),
                      .access = &Operation<Class, function>::access};
  Called::types(attribute);
  return attribute;
}

// Never defined: if a table calls it, the compiler's message names it.
void theLastNumberIsNotTheOneThatIsStated();

/// Constructor argument `index` as a T.
template <class T>
decltype(auto) constructorArgument(Arguments arguments, std::size_t index, const char* type) {
  if (!arguments[index].is<T>()) [[unlikely]] {
    argumentTypeWrong(type, index, typeRef<T>(), arguments[index]);
  }
  return arguments[index].as<T>();
}

}  // namespace table

/// Makes a table of the rows and gives them their numbers, from `first` to `last`.
template <U32 first, U32 last, class... Rows>
consteval std::array<Attribute, sizeof...(Rows)> attributeTable(Rows... rows) {
  std::array<Attribute, sizeof...(Rows)> attributes{rows...};
  U32 number = first;
  for (Attribute& attribute : attributes) {
    attribute.number = number + attribute.elementNumbers;
    number = attribute.number + 1;
  }
  if (number != last + 1) table::theLastNumberIsNotTheOneThatIsStated();
  return attributes;
}

/// Describes the constructor with these parameter types.
template <class... Parameters>
constexpr Constructor constructorOf() noexcept {
  static_assert(sizeof...(Parameters) <= Constructor::maxParameters);
  return {{table::typeRef<Parameters>()...}};
}

/// Makes a node of the class with the constructor that has these parameter types.
template <class Class, class... Parameters>
Halvo::Ptr<Halvo::Node> nodeCreate(std::span<const Value> arguments) {
  const char* const type = typeOf<Class>().name;
  if (arguments.size() != sizeof...(Parameters)) {
    table::argumentCountWrong(type, sizeof...(Parameters), arguments.size());
  }
  return [&]<std::size_t... index>(std::index_sequence<index...>) {
    return Halvo::makePtr<Class>(table::constructorArgument<Parameters>(arguments, index, type)...);
  }
  (std::index_sequence_for<Parameters...>{});
}

/// The operations on values of T. A value is made with the constructor that has these parameter
/// types, compared with `==`, and written and read in the record notation (Zel/Types/Record.h).
/// `hash` may be null.
template <class T, class... Parameters>
// NOLINTNEXTLINE(bugprone-exception-escape): it only makes a table and calls nothing
constexpr ValueOperations valueOperations(
    std::size_t (*hash)(const void* value) = nullptr) noexcept {
  static_assert(std::is_nothrow_move_constructible_v<T> && alignof(T) <= 8);
  return {
      .size = sizeof(T),
      .alignment = alignof(T),
      .construct =
          [](void* place, std::span<const Value> arguments) {
            const char* const type = typeOf<T>().name;
            if (arguments.size() != sizeof...(Parameters)) {
              table::argumentCountWrong(type, sizeof...(Parameters), arguments.size());
            }
            [&]<std::size_t... index>(std::index_sequence<index...>) {
              new (place) T(table::constructorArgument<Parameters>(arguments, index, type)...);
            }
            (std::index_sequence_for<Parameters...>{});
          },
      .copy = [](void* place, const void* from) { new (place) T(*static_cast<const T*>(from)); },
      .relocate =
          [](void* place, void* from) noexcept {
            new (place) T(std::move(*static_cast<T*>(from)));
            static_cast<T*>(from)->~T();
          },
      .destroy = [](void* value) noexcept { static_cast<T*>(value)->~T(); },
      .isEq = [](const void* a,
                 const void* b) { return *static_cast<const T*>(a) == *static_cast<const T*>(b); },
      .toText =
          [](const void* value) {
            return ZelHalvo::Impl::valueToStrep(*static_cast<const T*>(value));
          },
      .fromText = [](void* place,
                     const Halvo::String& text) { new (place) T(strepToValue<T>(text)); },
      .hash = hash};
}

}  // namespace Zel

// NOLINTBEGIN(bugprone-macro-parentheses): a name takes no parentheses
#define ZEL_READER_(NAME) [](const Class& o) -> decltype(auto) { return o.NAME(); }
#define ZEL_KEYED_(TYPE, NAME) [](TYPE& o, const auto& k) { return o.NAME(k); }
#define ZEL_CHANGE_(NAME) [](Class& o) { return o.NAME(); }
#define ZEL_MAP_(KIND, NAME)                                                           \
  ::Zel::table::map<Class>(#NAME, ::Zel::AttributeKind::KIND, ZEL_READER_(NAME),       \
                           ZEL_KEYED_(Class, NAME##Is), ZEL_KEYED_(const Class, NAME), \
                           ZEL_KEYED_(Class, NAME##Del), ZEL_CHANGE_(NAME##DelAll))

/// The key: the value that identifies the object.
#define ZEL_KEY(NAME) \
  ::Zel::table::scalar<Class>(#NAME, ::Zel::AttributeKind::key, ZEL_READER_(NAME))
#define ZEL_READ_ONLY(NAME) \
  ::Zel::table::scalar<Class>(#NAME, ::Zel::AttributeKind::readOnly, ZEL_READER_(NAME))
#define ZEL_READ_WRITE(NAME)                               \
  ::Zel::table::readWrite<Class>(#NAME, ZEL_READER_(NAME), \
                                 [](Class& o, const auto& v) { o.NAME##Is(v); })
#define ZEL_ORDERED_MAP(NAME) ZEL_MAP_(orderedMap, NAME)
#define ZEL_HASH_MAP(NAME) ZEL_MAP_(hashMap, NAME)
#define ZEL_ENTRY_SET(NAME)                                                              \
  ::Zel::table::set<Class>(#NAME, ZEL_READER_(NAME), ZEL_KEYED_(const Class, NAME##Has), \
                           ZEL_KEYED_(Class, NAME##Is), ZEL_KEYED_(Class, NAME##Del),    \
                           ZEL_CHANGE_(NAME##DelAll))
#define ZEL_QUEUE(NAME)                                                              \
  ::Zel::table::queue<Class>(#NAME, ZEL_READER_(NAME), ZEL_KEYED_(Class, NAME##Enq), \
                             ZEL_CHANGE_(NAME##Deq), ZEL_READER_(NAME##Front),       \
                             ZEL_READER_(NAME##Back), ZEL_CHANGE_(NAME##DelAll))
#define ZEL_OPERATION(NAME) ::Zel::table::operation<Class, &Class::NAME>(#NAME)
// NOLINTEND(bugprone-macro-parentheses)
