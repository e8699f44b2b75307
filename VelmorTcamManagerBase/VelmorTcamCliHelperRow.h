// A row in the making.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "Halvo/String.h"

namespace VelmorTcam {

/// Collects the cells of a row beside the heap, so that the row's String is its only allocation and
/// of just its size. What does not fit any more goes on in a String.
class RowText {
 public:
  RowText() noexcept = default;
  RowText(const RowText&) = delete;
  RowText& operator=(const RowText&) = delete;

  RowText& operator<<(const Halvo::String& cell) {
    std::size_t const size = cell.size();
    if (size <= Halvo::String::inlineCapacity && room() >= readable) [[likely]] {
      // A move of fixed size: what it carries too far is written over by what follows.
      std::memcpy(at_, cell.data(), readable);
      at_ += size;
      return *this;
    }
    return *this << cell.view();
  }
  RowText& operator<<(std::string_view text) {
    if (text.size() <= room()) [[likely]] {
      std::memcpy(at_, text.data(), text.size());
      at_ += text.size();
    } else {
      appendSlow(text);
    }
    return *this;
  }
  RowText& operator<<(char c) { return *this << std::string_view(&c, 1); }

  Halvo::String text() {
    if (spilled_.empty()) return Halvo::String(buffer_, size());
    spill();
    return std::move(spilled_);
  }

 private:
  static constexpr std::size_t readable = Halvo::String::readableBytes;

  std::size_t size() const noexcept { return static_cast<std::size_t>(at_ - buffer_); }
  std::size_t room() const noexcept { return sizeof buffer_ - size(); }
  void spill() {
    spilled_.append(buffer_, size());
    at_ = buffer_;
  }
  void appendSlow(std::string_view text) {
    spill();
    spilled_.append(text);
  }

  char* at_ = buffer_;
  Halvo::String spilled_;
  char buffer_[768];
};

}  // namespace VelmorTcam
