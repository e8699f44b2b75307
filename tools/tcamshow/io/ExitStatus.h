// How the program ends.
#pragma once

namespace tcamshow {

/// The exit status. A command whose answer is yes or no returns `yes` or `done`. A command that
/// fails throws an exception, and only main.cpp turns that into a status. So failure wins over
/// `yes`.
enum class ExitStatus : unsigned char {
  done = 0,         ///< also if the reader of the output has closed it
  failure = 1,      ///< the input is bad, the output cannot be written, or memory has run out
  commandLine = 2,  ///< the command line is wrong
  yes = 3,          ///< the answer to the command line's question is "yes"
};

}  // namespace tcamshow
