// What the tests of the questions share: answers of the program, and stores of entries.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"
#include "snapshot/EntryStore.h"
#include "snapshot/SnapshotReader.h"

/// The lines of a text.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// JSON Lines as values.
inline std::vector<nlohmann::json> jsonLinesOf(const std::string& text) {
  std::vector<nlohmann::json> values;
  for (const std::string& line : linesOf(text)) values.push_back(nlohmann::json::parse(line));
  return values;
}

/// A snapshot of version 2 with these lines and its last line.
inline std::string snapshotOf(const std::vector<std::string>& lines) {
  std::string text = "{\"type\":\"snapshot\",\"version\":2}\n";
  std::size_t groups = 0;
  for (const std::string& line : lines) {
    text += line + "\n";
    if (line.find("\"type\":\"group\"") != line.npos) ++groups;
  }
  return text + "{\"type\":\"end\",\"groups\":" + std::to_string(groups) +
         ",\"entries\":" + std::to_string(lines.size() - groups) + "}\n";
}

/// All entries of a snapshot's text.
inline std::unique_ptr<tcamshow::EntryStore> storeOf(const std::string& snapshot) {
  TemporaryFile const file(snapshot);
  tcamshow::Complaints complaints;
  auto const source = tcamshow::openSnapshot(tcamshow::InputFile(file.path()), complaints);
  return std::make_unique<tcamshow::EntryStore>(*source);
}

/// The lines of IPv6 entries that together match every packet, in a way that is hard to find out.
/// The address bits say which of nine pigeons sits in which of eight holes. An entry matches
/// where a pigeon has no hole, or where two share one; and one of both is always so.
inline std::vector<std::string> pigeonEntries() {
  constexpr unsigned pigeons = 9;
  constexpr unsigned holes = 8;
  using Bits = std::vector<std::pair<unsigned, bool>>;  // each with its number, of 256
  std::vector<std::string> lines;
  auto const add = [&lines](const Bits& bits) {
    unsigned char value[32] = {};
    unsigned char mask[32] = {};
    for (auto const& [number, isSet] : bits) {
      auto const bit = static_cast<unsigned char>(1U << number % 8);
      mask[number / 8] = static_cast<unsigned char>(mask[number / 8] | bit);
      if (isSet) value[number / 8] = static_cast<unsigned char>(value[number / 8] | bit);
    }
    auto const address = [](const unsigned char* octets) {
      std::ostringstream text;
      text << std::hex;
      for (unsigned i = 0; i < 16; i += 2) {
        text << (i == 0 ? "" : ":") << octets[i] * 256 + octets[i + 1];
      }
      return text.str();
    };
    auto const qualifier = [&](unsigned at) {
      return R"({"value":")" + address(value + at) + R"(","mask":")" + address(mask + at) + "\"}";
    };
    std::string const number = std::to_string(lines.size() + 1);
    lines.push_back(R"({"type":"entry","table":"ip6","shadowId":)" + number + R"(,"sequence":)" +
                    number + R"(,"action":"permit","qualifiers":{"qualifierSrcIp6":)" +
                    qualifier(0) + R"(,"qualifierDstIp6":)" + qualifier(16) + "}}");
  };
  for (unsigned pigeon = 0; pigeon < pigeons; ++pigeon) {
    Bits bits;
    for (unsigned hole = 0; hole < holes; ++hole) bits.emplace_back(pigeon * holes + hole, false);
    add(bits);
  }
  for (unsigned hole = 0; hole < holes; ++hole) {
    for (unsigned one = 0; one < pigeons; ++one) {
      for (unsigned other = one + 1; other < pigeons; ++other) {
        add({{one * holes + hole, true}, {other * holes + hole, true}});
      }
    }
  }
  return lines;
}
