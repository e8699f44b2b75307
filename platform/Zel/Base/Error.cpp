#include "Zel/Base/Error.h"

namespace Zel {

// Out of line: each class then has its type information in one place only, and an error that one
// library throws can be caught in another.
Error::~Error() = default;
ParseError::~ParseError() = default;
RangeError::~RangeError() = default;
ArgumentError::~ArgumentError() = default;
SetFalseValueError::~SetFalseValueError() = default;
NonHashableTypeError::~NonHashableTypeError() = default;

}  // namespace Zel
