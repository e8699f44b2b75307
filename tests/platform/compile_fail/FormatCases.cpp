// For each CASE a format that must not compile and, with RIGHT, the nearest one that must.
#include <string>

#include "Zel/Format/Format.h"

enum class Scoped { one };
enum Plain { one };

#ifdef RIGHT
#define WRONG_OR_RIGHT(wrong, right) right
#else
#define WRONG_OR_RIGHT(wrong, right) wrong
#endif

Halvo::String cell(int number, const char* text);
Halvo::String cell(int number, const char* text) {
  static_cast<void>(number);
  static_cast<void>(text);
  [[maybe_unused]] long const wide = number;
  [[maybe_unused]] const char* const runTime = text;
  [[maybe_unused]] Halvo::String out;
#if CASE == 1
  return Zel::_fmt(WRONG_OR_RIGHT("%d %d", "%d"), number);
#elif CASE == 2
  return Zel::_fmt(WRONG_OR_RIGHT("%d", "%d %d"), number, number);
#elif CASE == 3
  return Zel::_fmt(WRONG_OR_RIGHT("%y", "%x"), number);
#elif CASE == 4
  return Zel::_fmt(WRONG_OR_RIGHT("%d%", "%d%%"), number);
#elif CASE == 5
  return Zel::_fmt(WRONG_OR_RIGHT("%-0", "%-0d"), number);
#elif CASE == 6
  return Zel::_fmt(WRONG_OR_RIGHT("%2147483648d", "%2147483647d"), number);
#elif CASE == 7
  return Zel::_fmt(WRONG_OR_RIGHT("%.9999999999d", "%.99d"), number);
#elif CASE == 8
  return Zel::_fmt(WRONG_OR_RIGHT("%d", "%ld"), wide);
#elif CASE == 9
  return Zel::_fmt(WRONG_OR_RIGHT("%lu", "%u"), number);
#elif CASE == 10
  return Zel::_fmt(WRONG_OR_RIGHT("%s", "%d"), number);
#elif CASE == 11
  return Zel::_fmt(WRONG_OR_RIGHT("%d", "%s"), text);
#elif CASE == 12
  return Zel::_fmt(WRONG_OR_RIGHT("%x", "%p"), runTime);
#elif CASE == 13
  return Zel::_fmt("%*d", WRONG_OR_RIGHT(wide, number), number);
#elif CASE == 14
  return Zel::_fmt("%.*s", WRONG_OR_RIGHT(text, number), text);
#elif CASE == 15
  return Zel::_fmt("%d", WRONG_OR_RIGHT(Scoped::one, Plain::one));
#elif CASE == 16
  return Zel::_fmt("%d", WRONG_OR_RIGHT(1.0, 1));
#elif CASE == 17
  return Zel::_fmt(WRONG_OR_RIGHT("%1$d", "%1d"), number);
#elif CASE == 18
  return Zel::_fmt(WRONG_OR_RIGHT("%d%n", "%d%p"), number, static_cast<void*>(&out));
#elif CASE == 19
  return Zel::_fmt(WRONG_OR_RIGHT("%f", "%d"), number);
#elif CASE == 20
  return Zel::_fmt(WRONG_OR_RIGHT("%ls", "%s"), text);
#elif CASE == 21
  return Zel::_fmt(WRONG_OR_RIGHT("%5%", "%%"));
#elif CASE == 22
  return Zel::_fmt(WRONG_OR_RIGHT("a\0b", "ab"));
#elif CASE == 23
  return Zel::_fmt(WRONG_OR_RIGHT(runTime, "%d"), number);
#elif CASE == 24
  return Zel::_fmt("%s", WRONG_OR_RIGHT(nullptr, text));
#elif CASE == 25
  return Zel::_fmt(WRONG_OR_RIGHT("%p", "%s"), std::string("text"));
#elif CASE == 26
  Zel::_fmtAppend(out, WRONG_OR_RIGHT("%s", "%d"), number);
  return out;
#elif CASE == 27
  return Zel::_fmt(Zel::runtimeFormat("%d"), WRONG_OR_RIGHT(1.0, 1));
#elif CASE == 28
  return Zel::_fmt(WRONG_OR_RIGHT("%.-5d", "%-.5d"), number);
#elif CASE == 29
  return Zel::_fmt("%p", WRONG_OR_RIGHT(&cell, &out));
#endif
}
