// Many small inputs in one text file: one input a line, so that a corpus can be read and compared.
//
// Printable ASCII stands as it is, but for the backslash: \\, \n, \r, \t, \xHH.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmorfuzz {

std::string escaped(std::string_view bytes);
/// Throws std::runtime_error for a line that escaped() does not write.
std::string unescaped(std::string_view line);

/// The bytes of a file. Throws std::runtime_error when it cannot be read.
std::string contentsOf(const std::string& path);
/// The inputs of a packed file, in its order.
std::vector<std::string> packedInputs(const std::string& path);
/// The contents of a directory's files, in the order of their names; none when there is no such
/// directory. A name that begins with a dot is skipped.
std::vector<std::string> inputsIn(const std::string& directory);

}  // namespace velmorfuzz
