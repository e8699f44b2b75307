#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;
  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
    readEnd = ends[0];
    writeEnd = ends[1];
  }
};

void feedText(int descriptor, std::string_view text) {
  while (!text.empty()) {
    ssize_t const count = ::write(descriptor, text.data(), text.size());
    if (count <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

/// Closes the descriptor at its end, or when `limit` bytes have come.
void collect(int descriptor, std::string& text, std::size_t limit) {
  char buffer[65536];
  while (text.size() < limit) {
    ssize_t const count = ::read(descriptor, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(descriptor);
}

/// Waits until a pipe takes no more, or the child has ended.
void waitUntilFull(int writeEnd, pid_t child) {
  for (;;) {
    pollfd room{writeEnd, POLLOUT, 0};
    if (::poll(&room, 1, 0) == 0) return;
    siginfo_t ended{};
    if (::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        ended.si_pid == child) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& arguments, const ProcessOptions& options) {
  // A program that ends before it has read its input is no fault of the test's.
  ::signal(SIGPIPE, SIG_IGN);
  Pipe in;
  Pipe out;
  Pipe err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.readEnd, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.writeEnd, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.writeEnd, STDERR_FILENO);
  if (!options.outPath.empty()) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, options.outPath.c_str(), O_WRONLY, 0);
  }
  if (options.outIsClosed) posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
  if (options.outHasNoReader) {
    ::close(out.readEnd);
    out.readEnd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  }
  if (options.outIsNonBlocking) ::fcntl(out.writeEnd, F_SETFL, O_NONBLOCK);
  // The program gets the usual SIGPIPE, whatever this process does with it.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

  std::vector<char*> argv;
  std::vector<std::string> copies;
  if (options.addressSpaceKib != 0) {
    std::string const limit = std::to_string(options.addressSpaceKib);
    copies = {"/bin/sh", "-c", "ulimit -v " + limit + " && exec \"$0\" \"$@\""};
  }
  if (options.asNobody) {
    for (const char* const word :
         {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"}) {
      copies.emplace_back(word);
    }
  }
  copies.insert(copies.end(), arguments.begin(), arguments.end());
  for (std::string& argument : copies) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = -1;
  int const error = ::posix_spawn(&child, argv[0], &actions, &attributes, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  ::close(in.readEnd);
  ::close(err.writeEnd);
  if (error != 0) throw std::runtime_error("posix_spawn of " + arguments[0]);

  ProcessResult result;
  std::thread feeder([&] {
    if (options.feed) {
      options.feed(in.writeEnd);
    } else {
      feedText(in.writeEnd, options.input);
    }
    ::close(in.writeEnd);
  });
  std::thread errCollector([&] { collect(err.readEnd, result.err, static_cast<std::size_t>(-1)); });
  if (options.outIsReadLate) waitUntilFull(out.writeEnd, child);
  ::close(out.writeEnd);
  collect(out.readEnd, result.out, options.outLimit);
  feeder.join();
  errCollector.join();
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

ProcessResult runTcamshow(const std::vector<std::string>& arguments,
                          const ProcessOptions& options) {
  std::vector<std::string> whole = {TCAMSHOW_PROGRAM};
  whole.insert(whole.end(), arguments.begin(), arguments.end());
  return runProcess(whole, options);
}
