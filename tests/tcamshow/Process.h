// Runs a program and tells what it did.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct ProcessResult {
  int status = -1;  ///< the exit status; 128 and the signal's number when a signal ended it
  std::string out;
  std::string err;
};

struct ProcessOptions {
  /// Fed to standard input, then closed. The program may end without reading it.
  std::string input = {};
  /// In place of `input`: called with the pipe until it returns.
  std::function<void(int descriptor)> feed = {};
  /// Where standard output goes in place of the result: a file's path.
  std::string outPath = {};
  /// Standard output is a descriptor that is not open.
  bool outIsClosed = false;
  /// Standard output is a pipe whose reader has gone before the program begins.
  bool outHasNoReader = false;
  /// Standard output is a pipe that would rather fail than wait.
  bool outIsNonBlocking = false;
  /// Read standard output only when the pipe is full, or the program has ended.
  bool outIsReadLate = false;
  /// Run as the user nobody; only root can.
  bool asNobody = false;
  /// The most address space that the program may take; 0 is no limit.
  std::size_t addressSpaceKib = 0;
  /// Stop reading standard output after so many bytes and close it.
  std::size_t outLimit = static_cast<std::size_t>(-1);
};

ProcessResult runProcess(const std::vector<std::string>& arguments,
                         const ProcessOptions& options = {});

/// The program under test with these arguments.
ProcessResult runTcamshow(const std::vector<std::string>& arguments,
                          const ProcessOptions& options = {});
