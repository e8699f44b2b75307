// The command that prints what reflection knows.
#pragma once

#include "io/LineReader.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

/// Reads a snapshot to its end and prints the usage tree and the summary that it makes, one line an
/// attribute: type, name, value. What is inside something stands two blanks to its right.
void inspect(InputFile& snapshot, OutputBuffer& out);

/// Prints the types of the library's type module: enumerations with their values, classes and value
/// types with their attributes (number, kind, name, type, operations), those of their bases first.
void inspectTypes(OutputBuffer& out);

}  // namespace tcamshow
