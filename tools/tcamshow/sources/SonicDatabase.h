// The databases of a SONiC switch, as files of a directory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "io/InputFile.h"
#include "sources/JsonDocument.h"

namespace tcamshow {

enum class SonicDatabaseKind : std::uint8_t { asic, config, counters, state };

/// The name of a database: "ASIC_DB".
std::string_view databaseName(SonicDatabaseKind kind) noexcept;

/// The files of a directory that hold databases: ASIC_DB.json or ASIC_DB.json.gz, in upper or lower
/// case.
class SonicDirectory {
 public:
  /// Throws InputError if the directory cannot be read, holds no ASIC_DB, or holds a database
  /// twice.
  explicit SonicDirectory(const std::string& path);

  /// The path of the database's file, or nothing.
  const std::optional<std::string>& fileOf(SonicDatabaseKind kind) const noexcept {
    return files_[static_cast<std::size_t>(kind)];
  }

 private:
  std::array<std::optional<std::string>, 4> files_;
};

/// One database: an object of rows, each with a key and fields. Texts of keys and rows are valid as
/// long as the database.
class SonicDatabase {
 public:
  /// In bytes, unpacked.
  static constexpr std::size_t largest = std::size_t{1} << 30;

  /// Reads the file, and checks that it is JSON. Throws InputError.
  SonicDatabase(const std::string& path, SonicDatabaseKind kind);

  using UseRow = std::function<void(std::string_view key, std::string_view row)>;
  /// Calls `use` for each row whose key begins with one of `starts`, and skips the others unread.
  /// Call it once. Throws InputError if the keys are those of another database.
  void eachRow(std::span<const std::string_view> starts, const UseRow& use);
  /// Calls `use` for each field of a row. The row is an object of fields, or an object of the kind
  /// `{"type":"hash","value":{FIELDS}}`.
  void eachField(std::string_view row, const JsonFields::UseField& use);

  const std::string& fileName() const noexcept { return document_.fileName(); }
  /// Keeps a text as long as the database.
  std::string_view keep(std::string_view text) { return document_.keep(std::string(text)); }
  /// Throws InputError about a place of the text in the row of `key`.
  [[noreturn]] void fail(const char* at, std::string_view key, std::string_view message) const;
  /// The text of a warning about a row.
  std::string warning(std::string_view key, std::string_view row, std::string_view message) const;

 private:
  SonicDatabaseKind kind_;
  JsonDocument document_;
  JsonFields fields_;
};

/// Reads an object id, such as `oid:0x7000000000600`. False if it is none.
bool objectIdFromText(std::string_view text, std::uint64_t& id) noexcept;

}  // namespace tcamshow
