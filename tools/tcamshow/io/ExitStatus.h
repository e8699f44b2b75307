// How the program ends.
#pragma once

namespace tcamshow {

/// The exit status. Each command that can be answered with yes or no returns `done` or `yes`; that
/// a command has failed is told by an exception. So failure wins over yes: see main.cpp, which is
/// the only place that makes a status of an exception.
enum class ExitStatus : unsigned char {
  done = 0,         ///< also when whoever reads the output has closed it
  failure = 1,      ///< the input is bad, the output cannot be written, or memory has run out
  commandLine = 2,  ///< the command line is wrong
  yes = 3,          ///< the answer to what the command line asked for is "yes"
};

}  // namespace tcamshow
