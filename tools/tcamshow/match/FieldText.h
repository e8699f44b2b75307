// The text forms of field values.
//
// Threads: any thread. The functions keep no state.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "match/Field.h"

namespace tcamshow {

/// A fault in a text. what() says what is wrong and what was expected.
class TextFault : public std::runtime_error {
 public:
  /// `at` is the place of the fault in the text, in bytes, counted from 0.
  TextFault(std::size_t at, const std::string& message);
  ~TextFault() override;
  std::size_t at() const noexcept { return at_; }

 private:
  std::size_t at_;
};

/// Reads the values that a text names, as sets of the width of `name`:
///
///     any  *                     every value
///     10.0.0.1  80  0x50  tcp    one value
///     10.0.0.0/8  2001:db8::/32  addresses with this prefix
///     10.0.0.1/255.0.0.255       value and mask; also for numbers: 80/0xff
///     1024-65535                 from one value to another, both included
///     yes  no                    for frag
///     +S-A                       for flags: SYN set, ACK clear; F S R P A U
///     1024/0xfc00&1100-1200      the values that are in both
///
/// Throws TextFault. It is also a fault if a range ends before it begins, or if the field cannot
/// hold a number.
FieldSets valuesFromText(const FieldName& name, std::string_view text);

/// Appends the set's shortest text in this notation. All values are "*".
void valuesAppend(std::string& out, const FieldName& name, const FieldSet& set);

/// "tcp", "icmp6" or a number.
std::string protocolText(Word protocol);
/// If no protocol has that name, returns false and leaves the result unchanged.
bool protocolByName(std::string_view name, Word& protocol) noexcept;

}  // namespace tcamshow
