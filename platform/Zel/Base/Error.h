// The errors that the type runtime throws.
//
// Threads: as std::runtime_error. A thrown error belongs to the thread that catches it.
#pragma once

#include <stdexcept>
#include <string>

#include "VelmorPlatformExport.h"

namespace Zel {

/// The base class of all errors of the type runtime. what() says what is wrong, and where.
class VELMOR_PLATFORM_API Error : public std::runtime_error {
 public:
  explicit Error(const std::string& what) : std::runtime_error(what) {}
  ~Error() override;
};

/// A text is not a value of the requested type: an unknown enumeration name, a bad record, or text
/// left over after the value.
class VELMOR_PLATFORM_API ParseError : public Error {
 public:
  explicit ParseError(const std::string& what) : Error(what) {}
  ~ParseError() override;
};

/// A number is not a value of the type.
class VELMOR_PLATFORM_API RangeError : public Error {
 public:
  explicit RangeError(const std::string& what) : Error(what) {}
  ~RangeError() override;
};

/// An argument of a generic operation has the wrong type, is missing, or is one too many. The text
/// says what was expected. If the operation belongs to an attribute or a constructor, the text also
/// names it.
class VELMOR_PLATFORM_API ArgumentError : public Error {
 public:
  explicit ArgumentError(const std::string& what) : Error(what) {}
  ~ArgumentError() override;
};

/// An insertion into a set had the flag false: a set cannot store that an element is absent. The
/// text names the type and the attribute.
class VELMOR_PLATFORM_API SetFalseValueError : public Error {
 public:
  explicit SetFalseValueError(const std::string& what) : Error(what) {}
  ~SetFalseValueError() override;
};

/// The type has no hash. The text names the type.
class VELMOR_PLATFORM_API NonHashableTypeError : public Error {
 public:
  explicit NonHashableTypeError(const std::string& what) : Error(what) {}
  ~NonHashableTypeError() override;
};

}  // namespace Zel
