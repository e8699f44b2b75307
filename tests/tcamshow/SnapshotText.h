// Snapshots as texts, for the tests of the reader.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "TemporaryFile.h"
#include "io/InputError.h"
#include "snapshot/SnapshotReader.h"

namespace tcamshow {

inline constexpr std::string_view header1 = "{\"type\":\"snapshot\",\"version\":1}\n";

/// Reads a whole snapshot; throws the reader's error.
inline std::size_t countEntries(const std::string& text) {
  TemporaryFile const snapshot(text);
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  std::size_t entries = 0;
  for (;;) {
    Source::Item const line = reader->next();
    if (line == Source::Item::end) return entries;
    if (line == Source::Item::entry) ++entries;
  }
}

/// The line and message of the error that reading throws, or "no error".
inline std::string errorOf(const std::string& text) {
  try {
    countEntries(text);
  } catch (const InputError& error) {
    return std::to_string(error.line()) + ": " + error.message();
  }
  return "no error";
}

inline Entry readEntry(const std::string& members) {
  TemporaryFile const snapshot(std::string(header1) + "{\"type\":\"entry\"," + members + "}\n");
  Complaints complaints;
  auto const reader = openSnapshot(InputFile(snapshot.path()), complaints);
  EXPECT_EQ(reader->next(), Source::Item::entry);
  Entry entry = reader->entry();
  EXPECT_EQ(reader->next(), Source::Item::end);
  // The texts belong to the reader.
  entry.description = entry.action = entry.feature = {};
  return entry;
}

}  // namespace tcamshow
