// The text of field values, as people write and read them.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "match/Field.h"

namespace tcamshow {

/// A text is not what was expected. what() says what is wrong and what was expected.
class TextFault : public std::runtime_error {
 public:
  /// `at`: where the fault is in the text, in bytes from 0.
  TextFault(std::size_t at, const std::string& message);
  ~TextFault() override;
  std::size_t at() const noexcept { return at_; }

 private:
  std::size_t at_;
};

/// Reads the values that a text names, as sets of the name's own width:
///
///     any  *                     every value
///     10.0.0.1  80  0x50  tcp    one value
///     10.0.0.0/8  2001:db8::/32  addresses that begin alike
///     10.0.0.1/255.0.0.255       value and mask; of numbers too: 80/0xff
///     1024-65535                 from one value to another, both included
///     yes  no                    of frag
///     +S-A                       of flags: SYN set, ACK clear; F S R P A U
///     1024/0xfc00&1100-1200      what is in both
///
/// Throws TextFault. A range whose end lies before its beginning is a fault, and so is a number
/// that the field cannot hold.
FieldSets valuesFromText(const FieldName& name, std::string_view text);

/// Appends the set's shortest text in that notation; "*" for every value.
void valuesAppend(std::string& out, const FieldName& name, const FieldSet& set);

/// "tcp", "icmp6" or a number.
std::string protocolText(Word protocol);
/// False, and the result untouched, where no protocol has that name.
bool protocolByName(std::string_view name, Word& protocol) noexcept;

}  // namespace tcamshow
