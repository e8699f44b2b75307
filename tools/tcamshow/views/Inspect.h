// What reflection knows.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Prints the usage tree and the summary of all that `source` gives, one line an attribute: type,
/// name, value. What is inside something stands two blanks to its right.
void inspect(Source& source, OutputBuffer& out);

/// Prints the types of the library's type module: enumerations with their values, classes and value
/// types with their attributes (number, kind, name, type, operations), those of their bases first.
void inspectTypes(OutputBuffer& out);

}  // namespace tcamshow
