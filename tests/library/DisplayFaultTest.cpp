// displayEntryRequest on descriptors that do not take the row.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "ShadowFixture.h"

#if defined(__SANITIZE_ADDRESS__)
// The headers of g++ do not declare these.
extern "C" void __lsan_disable();
extern "C" void __lsan_enable();
#endif

namespace VelmorTcam {
namespace {

// The C library's dprintf does not free its buffer if the descriptor is not open.
class LeakOfTheCLibrary {
 public:
#if defined(__SANITIZE_ADDRESS__)
  LeakOfTheCLibrary() { ::__lsan_disable(); }
  ~LeakOfTheCLibrary() { ::__lsan_enable(); }
#else
  LeakOfTheCLibrary() {}
  ~LeakOfTheCLibrary() {}
#endif
  LeakOfTheCLibrary(const LeakOfTheCLibrary&) = delete;
  LeakOfTheCLibrary& operator=(const LeakOfTheCLibrary&) = delete;
};

using velmortest::IpFormat;
using velmortest::ShadowOf;

constexpr std::size_t wide = 200'000;  // more than a pipe holds

void display(int descriptor, std::size_t actionSize = 6) {
  Halvo::Ptr<const VelmorTcamEntryShadow> const shadow = ShadowOf(5);
  IpFormat(Halvo::String(actionSize, 'x'))
      .displayEntryRequest(static_cast<U32>(descriptor), RequestKey("acl"), RuleId(10), "text",
                           shadow, 42, nullptr);
}

std::string rowText(std::size_t actionSize = 6) {
  return velmortest::rowOf(IpFormat(Halvo::String(actionSize, 'x')), ShadowOf(5));
}

struct Ends {
  int read = -1;
  int write = -1;
  explicit Ends(int flags = 0) {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, flags), 0);
    read = ends[0];
    write = ends[1];
  }
  ~Ends() {
    readClose();
    ::close(write);
  }
  Ends(const Ends&) = delete;
  Ends& operator=(const Ends&) = delete;
  void readClose() {
    if (read >= 0) ::close(read);
    read = -1;
  }
};

// Reads the present content of the pipe.
std::string taken(int descriptor) {
  std::string text;
  char buffer[65536];
  for (pollfd more{descriptor, POLLIN, 0}; ::poll(&more, 1, 0) > 0;) {
    ssize_t const size = ::read(descriptor, buffer, sizeof buffer);
    if (size <= 0) break;
    text.append(buffer, static_cast<std::size_t>(size));
  }
  return text;
}

TEST(DisplayFault, ADescriptorThatTakesNothingStopsNothing) {
  int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  int const readOnly = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  int const closed = ::dup(full);
  ASSERT_EQ(::close(closed), 0);
  for (std::size_t const size : {std::size_t{6}, wide}) {
    SCOPED_TRACE(size);
    for (int const descriptor : {full, readOnly}) display(descriptor, size);
    LeakOfTheCLibrary const known;
    for (int const descriptor : {closed, -1}) display(descriptor, size);
  }
  ::close(full);
  ::close(readOnly);
  Ends pipe;
  display(pipe.write);
  EXPECT_EQ(taken(pipe.read), rowText());
}

TEST(DisplayFault, APipeWithoutReaderIsForTheSignalsDispositionToSay) {
  Ends pipe(O_CLOEXEC);
  pipe.readClose();
  EXPECT_EXIT(
      {
        ::signal(SIGPIPE, SIG_IGN);
        display(pipe.write);
        ::_exit(0);
      },
      testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(
      {
        ::signal(SIGPIPE, SIG_DFL);
        display(pipe.write);
        ::_exit(0);
      },
      testing::KilledBySignal(SIGPIPE), "^$");
}

TEST(DisplayFault, AFullPipeThatDoesNotWaitKeepsABeginning) {
  Ends pipe(O_NONBLOCK | O_CLOEXEC);
  display(pipe.write, wide);
  std::string const got = taken(pipe.read);
  EXPECT_LT(got.size(), wide);
  EXPECT_TRUE(rowText(wide).starts_with(got));
  display(pipe.write);
  EXPECT_EQ(taken(pipe.read), rowText());
}

TEST(DisplayFault, ASlowPipeGetsAll) {
  Ends pipe(O_CLOEXEC);
  std::thread writer([&] { display(pipe.write, wide); });
  for (pollfd room{pipe.write, POLLOUT, 0}; ::poll(&room, 1, 0) != 0;) std::this_thread::yield();
  std::string const whole = rowText(wide);
  std::string got;
  char buffer[65536];
  while (got.size() < whole.size()) {
    ssize_t const size = ::read(pipe.read, buffer, sizeof buffer);
    ASSERT_GT(size, 0);
    got.append(buffer, static_cast<std::size_t>(size));
  }
  writer.join();
  EXPECT_TRUE(got == whole);
}

std::atomic<int> interruptions{0};

TEST(DisplayFault, ASignalThatInterruptsTheWriteLeavesABeginning) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++interruptions; };  // without SA_RESTART
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  Ends pipe(O_CLOEXEC);
  std::atomic<bool> isDone{false};
  std::thread writer([&] {
    display(pipe.write, wide);
    isDone = true;
  });
  for (pollfd room{pipe.write, POLLOUT, 0}; ::poll(&room, 1, 0) != 0;) std::this_thread::yield();
  // A signal interrupts nothing until the thread is inside the write: send signals until it is
  // done.
  while (!isDone) {
    ASSERT_EQ(::pthread_kill(writer.native_handle(), SIGUSR1), 0);
    std::this_thread::yield();
  }
  writer.join();
  EXPECT_GT(interruptions, 0);
  std::string const got = taken(pipe.read);
  EXPECT_FALSE(got.empty());
  EXPECT_TRUE(rowText(wide).starts_with(got));
  ::sigaction(SIGUSR1, &before, nullptr);
}

TEST(DisplayFault, ARowIsOneWrite) {
  int ends[2];
  // On this socket each write is a message of its own.
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends), 0);
  display(ends[0]);
  display(ends[0]);
  std::string const row = rowText();
  char buffer[4096];
  for (int i = 0; i < 2; ++i) {
    ssize_t const size = ::recv(ends[1], buffer, sizeof buffer, MSG_DONTWAIT);
    ASSERT_GT(size, 0);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(size)), row);
  }
  EXPECT_EQ(::recv(ends[1], buffer, sizeof buffer, MSG_DONTWAIT), -1);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace VelmorTcam
