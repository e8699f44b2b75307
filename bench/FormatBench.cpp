// Zel::_fmt against snprintf into a buffer on the stack, for the formats of tables and reports.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string_view>

#include "Zel/Format/Format.h"

namespace {

using Halvo::String;

/// An argument as snprintf takes it: the same value, with texts as pointers.
template <class T>
const T& plain(const T& value) {
  return value;
}
const char* plain(const String& text) { return text.c_str(); }

String runtimeFormatText = "%11s|";

// Both calls spell the format out, as a caller would, so that the compiler can check it and fold
// constants. The optimiser does not see the arguments.
#define FORMAT_BENCH(NAME, LABEL, DECLARATIONS, FORMAT, ...) \
  void BM_Ours##NAME(benchmark::State& state) {              \
    DECLARATIONS;                                            \
    for (auto _ : state) {                                   \
      hide(__VA_ARGS__);                                     \
      String const cell = Zel::_fmt(FORMAT, __VA_ARGS__);    \
      benchmark::DoNotOptimize(cell.data());                 \
      benchmark::ClobberMemory();                            \
    }                                                        \
  }                                                          \
  BENCHMARK(BM_Ours##NAME)->Name("fmt/" LABEL "/ours");      \
  void BM_Snprintf##NAME(benchmark::State& state) {          \
    DECLARATIONS;                                            \
    for (auto _ : state) {                                   \
      hide(__VA_ARGS__);                                     \
      char printed[256];                                     \
      printPlain(                                            \
          printed, sizeof printed,                           \
          [](char* to, std::size_t size, auto... values) {   \
            std::snprintf(to, size, FORMAT, values...);      \
          },                                                 \
          __VA_ARGS__);                                      \
      benchmark::DoNotOptimize(&printed[0]);                 \
      benchmark::ClobberMemory();                            \
    }                                                        \
  }                                                          \
  BENCHMARK(BM_Snprintf##NAME)->Name("fmt/" LABEL "/snprintf")

template <class... Args>
void hide(Args&... args) {
  (benchmark::DoNotOptimize(args), ...);
}

template <class Print, class... Args>
[[gnu::always_inline]] inline void printPlain(char* to, std::size_t size, Print print,
                                              const Args&... args) {
  print(to, size, plain(args)...);
}

#define NUMBER unsigned number = 1048570
#define SIGNED int number = 27114
#define TEXT String text = "1024-2047"
#define WORD const char* text = "ICMPv6"
#define PAIR                \
  String a = "10.200.31.7"; \
  String b = "255.255.255.0"
#define WIDE unsigned long number = 8589934731UL

FORMAT_BENCH(SequenceNumber, "%-7u|", NUMBER, "%-7u|", number);
FORMAT_BENCH(SequenceWord, "%-7s|", WORD, "%-7s|", text);
FORMAT_BENCH(Protocol, " %-6s|", WORD, " %-6s|", text);
FORMAT_BENCH(Eleven, "%11s|", TEXT, "%11s|", text);
FORMAT_BENCH(Range, "%d-%d", int a = 1024; int b = 2047, "%d-%d", a, b);
FORMAT_BENCH(TwoEleven, "%11s|%11s|", String a = "100"; String b = "0xfff", "%11s|%11s|", a, b);
FORMAT_BENCH(RuleId, "%-10lu|", WIDE, "%-10lu|", number);
FORMAT_BENCH(Hits, "%11lu", WIDE, "%11lu", number);
FORMAT_BENCH(Addresses, "%15s|%15s|", PAIR, "%15s|%15s|", a, b);
FORMAT_BENCH(Ten, "%10s|", String text = "46/0x3F", "%10s|", text);
FORMAT_BENCH(Dscp, "%d/0x%02X", int a = 46; unsigned b = 63, "%d/0x%02X", a, b);
FORMAT_BENCH(Fragment, " %3s   |", const char* text = "*", " %3s   |", text);
FORMAT_BENCH(HexByte, "0x%02x", unsigned number = 47, "0x%02x", number);
FORMAT_BENCH(Addresses6, "%39s|%13s|", String a = "2001:db8:0:12::4:1";
             String b = "/64", "%39s|%13s|", a, b);
FORMAT_BENCH(Eight, " %8s |", String text = "AF41", " %8s |", text);
FORMAT_BENCH(Five, "%5s|", const char* text = "*", "%5s|", text);
FORMAT_BENCH(Decimal, "%d", SIGNED, "%d", number);
FORMAT_BENCH(Unsigned, "%u", NUMBER, "%u", number);
FORMAT_BENCH(TwoTexts, "%s|%s|", String a = "permit"; String b = "count", "%s|%s|", a, b);
FORMAT_BENCH(HexMark, "%xh", unsigned number = 0x86DD, "%xh", number);
FORMAT_BENCH(Count, "%12lu", WIDE, "%12lu", number);
FORMAT_BENCH(EntryLine, "    0x%08x %s hits - %s\\n", unsigned id = 0x2001F;
             String hits = "         731"; String text = "permit tcp any any eq ssh",
                                           "    0x%08x %s hits - %s\n", id, hits, text);
FORMAT_BENCH(Pipe, " in PIPE %d", int number = 3, " in PIPE %d", number);
FORMAT_BENCH(GroupLine, "TCAM group %d%s uses ...", int group = 17; String pipe = " in PIPE 1";
             int used = 120; const char* noun = "entries";
             int rest = 392, "TCAM group %d%s uses %d %s and can use up to %d more.\n", group, pipe,
             used, noun, rest);
FORMAT_BENCH(RequestLine, "  %s uses %d entries.\\n", String name = "ACL ipv4 ingress";
             int used = 120, "  %s uses %d entries.\n", name, used);

void BM_OursRuntime(benchmark::State& state) {
  String text = "1024-2047";
  for (auto _ : state) {
    hide(text, runtimeFormatText);
    String const cell = Zel::_fmt(Zel::runtimeFormat(runtimeFormatText), text);
    benchmark::DoNotOptimize(cell.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_OursRuntime)->Name("fmt/runtime %11s|/ours");

void BM_SnprintfRuntime(benchmark::State& state) {
  String text = "1024-2047";
  for (auto _ : state) {
    hide(text, runtimeFormatText);
    char cell[256];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(cell, sizeof cell, runtimeFormatText.c_str(), text.c_str());
#pragma GCC diagnostic pop
    benchmark::DoNotOptimize(&cell[0]);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_SnprintfRuntime)->Name("fmt/runtime %11s|/snprintf");

void BM_OursAppend(benchmark::State& state) {
  String a = "10.200.31.7";
  String b = "255.255.255.0";
  String row;
  for (auto _ : state) {
    hide(a, b);
    row.clear();
    Zel::_fmtAppend(row, "%15s|%15s|", a, b);
    benchmark::DoNotOptimize(row.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_OursAppend)->Name("fmt/append %15s|%15s|/ours");

void BM_SnprintfAppend(benchmark::State& state) {
  String a = "10.200.31.7";
  String b = "255.255.255.0";
  char row[256];
  for (auto _ : state) {
    hide(a, b);
    std::snprintf(row, sizeof row, "%15s|%15s|", a.c_str(), b.c_str());
    benchmark::DoNotOptimize(&row[0]);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_SnprintfAppend)->Name("fmt/append %15s|%15s|/snprintf");

}  // namespace
