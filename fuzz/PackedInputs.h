// Many small inputs in one text file, one input a line, so that people can read and compare a
// corpus.
//
// Printable ASCII is written as it is, except for the backslash. Escapes: \\, \n, \r, \t, \xHH.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmorfuzz {

std::string escaped(std::string_view bytes);
/// Throws std::runtime_error for a line that escaped() does not produce.
std::string unescaped(std::string_view line);

/// The bytes of a file. Throws std::runtime_error if it cannot be read.
std::string contentsOf(const std::string& path);
/// The inputs of a packed file, in the order of the file.
std::vector<std::string> packedInputs(const std::string& path);
/// The contents of a directory's files, in the order of their names. Empty if there is no such
/// directory. Skips names that begin with a dot.
std::vector<std::string> inputsIn(const std::string& directory);

}  // namespace velmorfuzz
