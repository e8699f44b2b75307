// The views of `inspect`, made by reflection.
#pragma once

#include "io/OutputBuffer.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Prints the usage tree and the summary of everything that `source` gives. Each line has an
/// attribute: type, name, value. Each level is indented by two more blanks.
void inspect(Source& source, OutputBuffer& out);

/// Prints the types of the library's type module: enumerations with their values, and classes and
/// value types with their attributes (number, kind, name, type, operations). The attributes of the
/// bases come first.
void inspectTypes(OutputBuffer& out);

}  // namespace tcamshow
