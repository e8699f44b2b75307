#include "io/LineReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "io/InputError.h"

namespace tcamshow {
namespace {

constexpr std::size_t firstCapacity = std::size_t{64} << 10;
// One byte more than a line: the line break of the longest, or the proof that it is too long.
constexpr std::size_t largestCapacity = LineReader::longestLine + 1;

}  // namespace

LineReader::LineReader(InputFile file)
    : file_(std::move(file)),
      buffer_(new char[firstCapacity + padding]()),
      capacity_(firstCapacity) {}

bool LineReader::next(std::string_view& line) {
  std::size_t searched = 0;
  for (;;) {
    std::size_t const rest = end_ - begin_;
    const char* const from = buffer_.get() + begin_;
    if (rest != searched) {
      const void* const lineBreak = std::memchr(from + searched, '\n', rest - searched);
      if (lineBreak != nullptr) {
        auto const size = static_cast<std::size_t>(static_cast<const char*>(lineBreak) - from);
        ++lineNumber_;
        begin_ += size + 1;
        line = {from, size};
        return true;
      }
    }
    if (atEnd_) {
      if (rest == 0) return false;
      ++lineNumber_;
      begin_ = end_;
      line = {from, rest};
      if (rest > longestLine) fail("the line is longer than 1 MiB");
      return true;
    }
    searched = rest;
    makeRoom();
    std::size_t const count = file_.read(buffer_.get() + end_, capacity_ - end_,
                                         lineNumber_ == 0 && rest == 0 ? 0 : lineNumber_ + 1);
    end_ += count;
    atEnd_ = count == 0;
  }
}

void LineReader::makeRoom() {
  std::size_t const rest = end_ - begin_;
  if (begin_ != 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, rest);
    begin_ = 0;
    end_ = rest;
  }
  if (rest < capacity_ / 2) return;
  if (capacity_ == largestCapacity) {
    if (rest < capacity_) return;
    ++lineNumber_;
    fail("the line is longer than 1 MiB");
  }
  std::size_t const capacity = std::min(capacity_ * 2, largestCapacity);
  std::unique_ptr<char[]> larger(new char[capacity + padding]());
  std::memcpy(larger.get(), buffer_.get(), rest);
  buffer_ = std::move(larger);
  capacity_ = capacity;
}

void LineReader::fail(const std::string& message) const {
  throw InputError(file_.name(), lineNumber_, message);
}

}  // namespace tcamshow
