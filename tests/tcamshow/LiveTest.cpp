// Live input on a terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

/// tcamshow with a terminal as its standard output and a pipe as its standard input.
class LiveProgram {
 public:
  explicit LiveProgram(std::vector<std::string> arguments) {
    terminal_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal_ < 0 || ::grantpt(terminal_) != 0 || ::unlockpt(terminal_) != 0) return;
    int const screen = ::open(::ptsname(terminal_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode{};
    if (screen < 0 || ::tcgetattr(screen, &mode) != 0) return;
    mode.c_oflag &= ~static_cast<tcflag_t>(OPOST);  // line feeds as they are
    ::tcsetattr(screen, TCSANOW, &mode);
    int in[2];
    if (::pipe2(in, O_CLOEXEC) != 0) return;
    input_ = in[1];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, screen, STDOUT_FILENO);
    arguments.insert(arguments.begin(), TCAMSHOW_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    isStarted_ = ::posix_spawn(&child_, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(screen);
  }
  ~LiveProgram() {
    if (input_ >= 0) ::close(input_);
    if (isStarted_ && child_ > 0) {
      ::kill(child_, SIGKILL);
      ::waitpid(child_, nullptr, 0);
    }
    if (terminal_ >= 0) ::close(terminal_);
  }
  LiveProgram(const LiveProgram&) = delete;
  LiveProgram& operator=(const LiveProgram&) = delete;

  bool isStarted() const { return isStarted_; }
  void feed(const std::string& text) const {
    ASSERT_EQ(::write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  /// The screen after a time in which every program has had its turn.
  std::string shown(std::size_t size) const {
    std::string text;
    char buffer[4096];
    pollfd screen{terminal_, POLLIN, 0};
    while (text.size() < size && ::poll(&screen, 1, 20000) == 1) {
      ssize_t const count = ::read(terminal_, buffer, sizeof buffer);
      if (count <= 0) break;
      text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
  }
  int end() {
    ::close(input_);
    input_ = -1;
    int status = 0;
    ::waitpid(child_, &status, 0);
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  int terminal_ = -1;
  int input_ = -1;
  pid_t child_ = -1;
  bool isStarted_ = false;
};

constexpr const char* header = "{\"type\":\"snapshot\",\"version\":1}\n";
std::string entry(int id) {
  return R"({"type":"entry","table":"tcam","shadowId":)" + std::to_string(id) + "}\n";
}
std::string row(int id) { return "    0x0000000" + std::to_string(id) + "            0 hits - \n"; }

TEST(Live, EachLineIsShownWhenItComes) {
  LiveProgram program({"tcam"});
  ASSERT_TRUE(program.isStarted());
  program.feed(header);
  for (int id = 1; id <= 3; ++id) {
    program.feed(entry(id));
    EXPECT_EQ(program.shown(row(id).size()), row(id));
  }
  // A line that comes in two parts.
  std::string const line = entry(4);
  program.feed(line.substr(0, 20));
  program.feed(line.substr(20));
  EXPECT_EQ(program.shown(row(4).size()), row(4));
  EXPECT_EQ(program.end(), 0);
}

TEST(Live, TheTablesHeaderIsShownWhenTheSnapshotsHasCome) {
  LiveProgram program({"mac"});
  ASSERT_TRUE(program.isStarted());
  program.feed(header);
  std::string const shown = program.shown(118);
  EXPECT_EQ(shown.substr(0, 13), "Id   | Seq | ");
  EXPECT_EQ(shown.back(), '\n');
  EXPECT_EQ(program.end(), 0);
}

TEST(Live, JsonAndImportsAreShownLineByLineToo) {
  {
    LiveProgram program({"tcam", "--json"});
    ASSERT_TRUE(program.isStarted());
    program.feed(header);
    std::string const first = "{\"type\":\"table\",\"schema\":1,\"table\":\"tcam\"}\n";
    EXPECT_EQ(program.shown(first.size()), first);
    program.feed(entry(1));
    EXPECT_EQ(program.shown(1).substr(0, 15), "{\"type\":\"entry\"");
  }
  LiveProgram program({"import", "classbench"});
  ASSERT_TRUE(program.isStarted());
  program.feed("@1.2.3.4/32 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n");
  std::string const start = "{\"type\":\"snapshot\",\"version\":2}\n{\"type\":\"entry\",";
  EXPECT_EQ(program.shown(start.size()).substr(0, start.size()), start);
  EXPECT_EQ(program.end(), 0);
}

}  // namespace
