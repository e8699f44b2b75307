// The run-time form of Zel::_fmt, with any format text and typed arguments. Its output is compared
// byte for byte with the C library's, and its check of the format with a second reader of the
// grammar.
#include "Zel/Format/Format.h"

#include <cstdio>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "Target.h"

namespace {

using Halvo::String;
using Halvo::U64;
using velmorfuzz::Input;
using Zel::FormatDetail::Arg;
using Zel::FormatDetail::ArgKind;

enum PlainColour : unsigned { colourRed = 7, colourAll = 0xFFFFFFFF };

/// An argument, in the form for Zel's functions and in the form for the oracle.
struct Argument {
  Arg arg;
  ArgKind kind;
  long number = 0;                ///< of an integer: its bits in the calling convention
  const char* pointed = nullptr;  ///< of a const char*, or an array
  std::string text;               ///< of a text
};

/// Keeps the arguments alive.
struct Storage {
  std::deque<std::string> texts;
  std::deque<String> strings;
  struct Array {
    char bytes[8];
  };
  std::deque<Array> arrays;
};

template <class T>
Argument integer(T value) {
  Argument made;
  made.arg = Zel::FormatDetail::argOf(value);
  made.kind = Zel::FormatDetail::kindOf<T>();
  made.number = static_cast<long>(+value);
  return made;
}

template <class T>
Argument text(const T& value) {
  Argument made;
  made.arg = Zel::FormatDetail::argOf(value);
  made.kind = Zel::FormatDetail::kindOf<T>();
  made.text = std::string_view(made.arg.text, made.arg.size);
  made.pointed = made.arg.text;
  return made;
}

Argument argument(Input& in, Storage& storage) {
  switch (in.below(19)) {
    case 0:
      return integer(in.oddNumber<int>());
    case 1:
      return integer(in.oddNumber<unsigned>());
    case 2:
      return integer(static_cast<char>(in.u8()));
    case 3:
      return integer(in.oddNumber<short>());
    case 4:
      return integer(in.u8());
    case 5:
      return integer(in.flag());
    case 6:
      return integer(in.oddNumber<long>());
    case 7:
      return integer(in.oddNumber<unsigned long>());
    case 8:
      return integer(in.oddNumber<long long>());
    case 9:
      return integer(static_cast<PlainColour>(in.oddNumber<unsigned>()));
    case 10: {
      Argument made;
      const char* const none = nullptr;
      made.arg = Zel::FormatDetail::argOf(none);
      made.kind = ArgKind::cString;
      return made;
    }
    case 11: {
      const auto* const address = reinterpret_cast<const void*>(in.oddNumber<std::uintptr_t>());
      Argument made;
      made.arg = Zel::FormatDetail::argOf(address);
      made.kind = ArgKind::pointer;
      made.pointed = static_cast<const char*>(address);
      return made;
    }
    case 12: {
      Argument made;
      made.arg = Zel::FormatDetail::argOf(nullptr);
      made.kind = ArgKind::pointer;
      return made;
    }
    case 13: {
      const char* const pointer = storage.texts.emplace_back(in.text(in.below(100))).c_str();
      Argument made;
      made.arg = Zel::FormatDetail::argOf(pointer);
      made.kind = ArgKind::cString;
      made.pointed = pointer;
      made.text = pointer;
      return made;
    }
    case 14:
      return text(storage.strings.emplace_back(in.text(in.below(160))));
    case 15:
      return text(storage.texts.emplace_back(in.text(in.below(160))));
    case 16: {
      // Not ended by a NUL: a sanitizer reports a read past the end.
      std::string_view const bytes = in.text(in.below(80));
      return text(bytes);
    }
    case 17: {
      // An array that is full, or has a NUL before its end.
      auto& bytes = storage.arrays.emplace_back().bytes;
      std::string_view const from = in.text(8);
      for (std::size_t i = 0; i < 8; ++i) bytes[i] = i < from.size() ? from[i] : '\0';
      return text(bytes);
    }
    default:
      return integer(in.oddNumber<unsigned short>());
  }
}

template <class... Args>
std::string printed(const std::string& format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  int const size = std::snprintf(nullptr, 0, format.c_str(), args...);
  FUZZ_CHECK(size >= 0);
  std::string text(static_cast<std::size_t>(size) + 1, '\0');
  std::snprintf(text.data(), text.size(), format.c_str(), args...);
#pragma GCC diagnostic pop
  text.pop_back();
  return text;
}

/// Reads a format by the grammar and makes the text that is expected of it.
class Oracle {
 public:
  Oracle(std::string_view format, const std::vector<Argument>& arguments)
      : format_(format), arguments_(arguments) {}

  /// False if the format does not fit the arguments.
  bool read() {
    while (at_ < format_.size()) {
      if (format_[at_] != '%') {
        expected_ += format_[at_++];
      } else if (at_ + 1 < format_.size() && format_[at_ + 1] == '%') {
        expected_ += '%';
        at_ += 2;
      } else if (++at_; !conversion()) {
        return false;
      }
    }
    return next_ == arguments_.size();
  }
  /// Whether the text cannot be compared: it is too long, or the oracle does not know it.
  bool isSkipped() const { return isSkipped_; }
  const std::string& expected() const { return expected_; }

 private:
  // Wider texts take long and show nothing new.
  static constexpr long widest = 3000;

  bool at(std::string_view set) const {
    return at_ < format_.size() && set.find(format_[at_]) != set.npos;
  }
  /// Reads digits. False beyond the largest number of the grammar.
  bool number(long& value, std::string& text) {
    value = 0;
    while (at("0123456789")) {
      text += format_[at_];
      value = value * 10 + (format_[at_++] - '0');
      if (value > 2147483647) return false;
    }
    return true;
  }
  bool star(long& value, std::string& text) {
    ++at_;
    if (next_ == arguments_.size() || arguments_[next_].kind != ArgKind::int4) return false;
    value = static_cast<int>(arguments_[next_++].number);
    text += std::to_string(value);
    return true;
  }

  bool conversion() {
    std::string piece = "%";
    while (at("-+ #0")) piece += format_[at_++];
    long width = 0;
    std::string widthText;
    if (at("*")) {
      if (!star(width, widthText)) return false;
    } else if (!number(width, widthText)) {
      return false;
    }
    piece += widthText;
    long precision = -1;
    if (at(".")) {
      ++at_;
      std::string precisionText;
      if (at("*")) {
        if (!star(precision, precisionText)) return false;
        // A negative precision means none. Written out as a number it would mean something else.
        if (precision >= 0) piece += '.' + precisionText;
      } else {
        if (!number(precision, precisionText)) return false;
        piece += '.' + precisionText;
      }
    }
    std::string modifier;
    if (at("h")) {
      modifier += format_[at_++];
      if (at("h")) modifier += format_[at_++];
    } else if (at("l")) {
      modifier += format_[at_++];
      if (at("l")) modifier += format_[at_++];
    } else if (at("jzt")) {
      modifier += format_[at_++];
    }
    if (at_ == format_.size()) return false;
    char const letter = format_[at_++];
    if (std::string_view("diuxXocsp").find(letter) == std::string_view::npos) return false;
    bool const isInteger = std::string_view("diuxXo").find(letter) != std::string_view::npos;
    if (!isInteger && !modifier.empty()) return false;
    if (next_ == arguments_.size()) return false;
    const Argument& argument = arguments_[next_++];
    bool const isWide = !modifier.empty() && modifier[0] != 'h';
    piece += modifier + letter;
    if (isInteger || letter == 'c') {
      if (argument.kind != (isWide ? ArgKind::int8 : ArgKind::int4)) return false;
    } else if (letter == 's') {
      if (argument.kind != ArgKind::cString && argument.kind != ArgKind::text &&
          argument.kind != ArgKind::array) {
        return false;
      }
    } else if (argument.kind != ArgKind::cString && argument.kind != ArgKind::array &&
               argument.kind != ArgKind::pointer) {
      return false;
    }
    if (width > widest || width < -widest || (precision > widest && letter != 's')) {
      isSkipped_ = true;
      return true;
    }
    if (isSkipped_) return true;
    if (letter == 'p') {
      expected_ += printed(piece, static_cast<const void*>(argument.pointed));
    } else if (letter == 's') {
      sized(piece, argument);
    } else if (isWide) {
      expected_ += printed(piece, argument.number);
    } else {
      expected_ += printed(piece, static_cast<int>(argument.number));
    }
    return true;
  }

  /// The C library ends a text at its first NUL. Zel prints all bytes of a text that knows its
  /// size.
  void sized(const std::string& piece, const Argument& argument) {
    if (argument.kind == ArgKind::cString) {
      expected_ += printed(piece, argument.pointed);
      return;
    }
    std::string text = argument.text;
    if (text.find('\0') == text.npos) {
      expected_ += printed(piece, text.c_str());
    } else if (text.find('\1') == text.npos) {
      for (char& c : text) c = c == '\0' ? '\1' : c;
      std::string cell = printed(piece, text.c_str());
      for (char& c : cell) c = c == '\1' ? '\0' : c;
      expected_ += cell;
    } else {
      isSkipped_ = true;
    }
  }

  std::string_view format_;
  const std::vector<Argument>& arguments_;
  std::size_t at_ = 0;
  std::size_t next_ = 0;
  std::string expected_;
  bool isSkipped_ = false;
};

/// Whether Zel accepts the format: the check that comes before it stops the process.
bool isTaken(std::string_view format, const std::vector<ArgKind>& kinds) {
  using namespace Zel::FormatDetail;
  const char* at = format.data();
  const char* const end = at + format.size();
  std::size_t next = 0;
  while (at != end) {
    if (*at++ != '%') continue;
    if (at != end && *at == '%') {
      ++at;
      continue;
    }
    Directive directive;
    if (readConversion(at, end, directive) != Fault::none) return false;
    if (bindConversion(directive, kinds.data(), kinds.size(), next) != Fault::none) return false;
  }
  return next == kinds.size();
}

/// Checks the public templates of the run-time form.
void checkDoor(std::string_view format, const Argument& argument, std::string_view expected) {
  auto const check = [&](const auto& value) {
    FUZZ_CHECK_TEXT(Zel::_fmt(Zel::runtimeFormat(format), value), expected);
    String out("0123456789");
    Zel::_fmtAppend(out, Zel::runtimeFormat(format), value);
    FUZZ_CHECK_TEXT(out, "0123456789" + std::string(expected));
  };
  switch (argument.kind) {
    case ArgKind::int4:
      return check(static_cast<int>(argument.number));
    case ArgKind::int8:
      return check(argument.number);
    case ArgKind::text:
      check(std::string_view(argument.text));
      return check(String(argument.text));
    case ArgKind::cString:
      return check(argument.pointed);
    default:
      return;
  }
}

}  // namespace

FUZZ_TARGET(format) {
  Storage storage;
  std::vector<Argument> arguments;
  for (unsigned count = in.below(6); count != 0; --count) {
    arguments.push_back(argument(in, storage));
  }
  std::string_view const format = in.rest();

  std::vector<Arg> args(1);
  std::vector<ArgKind> kinds;
  args.clear();
  for (const Argument& each : arguments) {
    args.push_back(each.arg);
    kinds.push_back(each.kind);
  }
  Oracle oracle(format, arguments);
  bool const fits = oracle.read();
  FUZZ_CHECK(isTaken(format, kinds) == fits);
  if (!fits || oracle.isSkipped()) return;

  String const text =
      Zel::FormatDetail::formatRuntime(format, args.data(), kinds.data(), kinds.size());
  FUZZ_CHECK_TEXT(text, oracle.expected());
  FUZZ_CHECK(text.c_str()[text.size()] == '\0');
  String out("some text before, of a size that leaves little room");
  Zel::FormatDetail::formatAppendRuntime(out, format, args.data(), kinds.data(), kinds.size());
  FUZZ_CHECK_TEXT(out, "some text before, of a size that leaves little room" + oracle.expected());
  // The format and the arguments may be the text that is appended to.
  String self(format);
  for (Argument& each : arguments) {
    if (each.kind == ArgKind::text && each.text == format) each.arg.text = self.data();
  }
  args.clear();
  for (const Argument& each : arguments) args.push_back(each.arg);
  Zel::FormatDetail::formatAppendRuntime(self, self.view(), args.data(), kinds.data(),
                                         kinds.size());
  FUZZ_CHECK_TEXT(self, std::string(format) + oracle.expected());
  if (arguments.size() == 1) checkDoor(format, arguments[0], oracle.expected());
}
