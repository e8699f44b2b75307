#include "io/OutputBuffer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "io/InputError.h"
#include "io/JsonText.h"

namespace tcamshow {
namespace {

struct Pipe {
  int ends[2];
  Pipe() { EXPECT_EQ(::pipe(ends), 0); }
  ~Pipe() {
    if (ends[0] >= 0) ::close(ends[0]);
    ::close(ends[1]);
  }
};

std::string readAll(int descriptor, std::size_t size) {
  std::string text;
  char buffer[4096];
  while (text.size() < size) {
    ssize_t const count = ::read(descriptor, buffer, sizeof buffer);
    if (count <= 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

TEST(OutputBuffer, WritesEveryPieceInOrder) {
  std::mt19937 random(1);
  for (bool const nonBlocking : {false, true}) {
    SCOPED_TRACE(nonBlocking);
    Pipe pipe;
    if (nonBlocking) {
      ASSERT_EQ(::fcntl(pipe.ends[1], F_SETFL, O_NONBLOCK), 0);
    }
    std::string expected;
    std::vector<std::string> pieces;
    for (int i = 0; i < 300; ++i) {
      std::size_t const size = random() % (i % 50 == 0 ? 200000 : 2000);
      pieces.emplace_back(size, static_cast<char>('a' + i % 26));
      expected += pieces.back();
    }
    std::string got;
    std::thread reader([&] {
      // The pipe fills first, so that a non-blocking writer has to wait.
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      got = readAll(pipe.ends[0], expected.size());
    });
    OutputBuffer out(pipe.ends[1]);
    for (const std::string& piece : pieces) out.write(piece);
    out.flush();
    reader.join();
    EXPECT_TRUE(got == expected);
  }
}

std::atomic<int> interruptions{0};

TEST(OutputBuffer, GoesOnWhenASignalInterruptsIt) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++interruptions; };  // without SA_RESTART
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  Pipe pipe;
  std::string const text = std::string(300'000, 'a') + std::string(300'000, 'b');
  std::thread writer([&] {
    OutputBuffer out(pipe.ends[1]);
    out.write(text);
    out.flush();
  });
  for (pollfd room{pipe.ends[1], POLLOUT, 0}; ::poll(&room, 1, 0) != 0;) {
    std::this_thread::yield();
  }
  // The pipe is full: the writer waits, or is about to.
  for (int i = 1; i <= 50; ++i) {
    ASSERT_EQ(::pthread_kill(writer.native_handle(), SIGUSR1), 0);
    while (interruptions < i) std::this_thread::yield();
  }
  std::string const got = readAll(pipe.ends[0], text.size());
  writer.join();
  EXPECT_TRUE(got == text);
  ::sigaction(SIGUSR1, &before, nullptr);
}

TEST(OutputBuffer, KeepsTextUntilItIsFlushed) {
  Pipe pipe;
  ASSERT_EQ(::fcntl(pipe.ends[0], F_SETFL, O_NONBLOCK), 0);
  OutputBuffer out(pipe.ends[1]);
  out.write("text");
  char buffer[8];
  EXPECT_EQ(::read(pipe.ends[0], buffer, sizeof buffer), -1);
  out.flush();
  EXPECT_EQ(::read(pipe.ends[0], buffer, sizeof buffer), 4);
  out.flush();
  EXPECT_EQ(::read(pipe.ends[0], buffer, sizeof buffer), -1);
}

TEST(OutputBuffer, TellsAClosedPipeFromAnError) {
  ::signal(SIGPIPE, SIG_IGN);
  Pipe pipe;
  ::close(pipe.ends[0]);
  pipe.ends[0] = -1;
  OutputBuffer closed(pipe.ends[1]);
  closed.write("text");
  EXPECT_THROW(closed.flush(), ClosedPipe);

  int const full = ::open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 0);
  OutputBuffer out(full);
  out.write("text");
  try {
    out.flush();
    ADD_FAILURE();
  } catch (const OutputError& error) {
    EXPECT_STREQ(error.what(), "cannot write the output: No space left on device");
  }
  // Text that could not be written is not tried again.
  EXPECT_NO_THROW(out.flush());
  ::close(full);
}

TEST(JsonText, EscapesWhatJsonWants) {
  struct Row {
    std::string_view text;
    const char* json;
  };
  Row const rows[] = {
      {"", R"("")"},
      {"plain", R"("plain")"},
      {"a\"b\\c", R"("a\"b\\c")"},
      {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
      {std::string_view("\0\x1F\x7F", 3), R"("\u0000\u001f\u007f")"},
      {"\xC3\xA9", "\"\xC3\xA9\""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.json);
    std::string out;
    appendJsonString(out, row.text);
    EXPECT_EQ(out, row.json);
  }
}

}  // namespace
}  // namespace tcamshow
