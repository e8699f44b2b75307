#include "Zel/Base/Error.h"

namespace Zel {

// Out of line, so that each class has one home for its type information and a throw in one library
// is caught in another.
Error::~Error() = default;
ParseError::~ParseError() = default;
RangeError::~RangeError() = default;
ArgumentError::~ArgumentError() = default;
SetFalseValueError::~SetFalseValueError() = default;
NonHashableTypeError::~NonHashableTypeError() = default;

}  // namespace Zel
