// The errors that the type runtime throws.
//
// Threads: as std::runtime_error; one that is thrown belongs to the thread that catches it.
#pragma once

#include <stdexcept>
#include <string>

#include "VelmorPlatformExport.h"

namespace Zel {

/// The root of all errors of the type runtime; what() says what was wrong, and where.
class VELMOR_PLATFORM_API Error : public std::runtime_error {
 public:
  explicit Error(const std::string& what) : std::runtime_error(what) {}
  ~Error() override;
};

/// Text that does not read as the value that was asked for: an unknown enumeration name, a bad
/// record, text left over.
class VELMOR_PLATFORM_API ParseError : public Error {
 public:
  explicit ParseError(const std::string& what) : Error(what) {}
  ~ParseError() override;
};

/// A number outside the type's values.
class VELMOR_PLATFORM_API RangeError : public Error {
 public:
  explicit RangeError(const std::string& what) : Error(what) {}
  ~RangeError() override;
};

/// An argument of a generic operation that is of another type, missing, or one too many. Names the
/// type, the attribute, and what was expected.
class VELMOR_PLATFORM_API ArgumentError : public Error {
 public:
  explicit ArgumentError(const std::string& what) : Error(what) {}
  ~ArgumentError() override;
};

/// A set was asked to hold an element as absent: an insertion whose flag is false. Names the type
/// and the attribute.
class VELMOR_PLATFORM_API SetFalseValueError : public Error {
 public:
  explicit SetFalseValueError(const std::string& what) : Error(what) {}
  ~SetFalseValueError() override;
};

/// The hash of a value whose type has none. Names the type.
class VELMOR_PLATFORM_API NonHashableTypeError : public Error {
 public:
  explicit NonHashableTypeError(const std::string& what) : Error(what) {}
  ~NonHashableTypeError() override;
};

}  // namespace Zel
