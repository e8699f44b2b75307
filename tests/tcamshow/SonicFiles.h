// A directory with the databases of a SONiC switch, for a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "SourceEntries.h"
#include "io/InputError.h"
#include "sources/Sonic.h"

namespace tcamshow {

class SonicFiles {
 public:
  SonicFiles() : path_(std::filesystem::temp_directory_path() / "tcamshow_sonic_XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp");
  }
  ~SonicFiles() { std::filesystem::remove_all(path_); }
  SonicFiles(const SonicFiles&) = delete;
  SonicFiles& operator=(const SonicFiles&) = delete;

  const std::string& path() const { return path_; }
  /// Writes a file, whatever its text is.
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(std::filesystem::path(path_) / name, std::ios::binary) << text;
  }
  /// Writes a database of these rows.
  void writeRows(const std::string& name, const std::vector<std::string>& rows) const {
    std::string text = "{";
    for (const std::string& row : rows) {
      if (text.size() != 1) text += ',';
      text += '\n' + row;
    }
    write(name, text + "\n}\n");
  }

 private:
  std::string path_;
};

// --- rows

inline std::string asicTable(const std::string& id, const std::string& stage = "INGRESS") {
  return "\"ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:" + id +
         R"(":{"SAI_ACL_TABLE_ATTR_ACL_STAGE":"SAI_ACL_STAGE_)" + stage + "\"}";
}
/// `attributes` are NAME=VALUE, each without SAI_ACL_ENTRY_ATTR_.
inline std::string asicEntry(const std::string& id, const std::string& table,
                             const std::vector<std::string>& attributes) {
  std::string row = "\"ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:" + id +
                    R"(":{"SAI_ACL_ENTRY_ATTR_TABLE_ID":"oid:)" + table + '"';
  for (const std::string& attribute : attributes) {
    std::size_t const sign = attribute.find('=');
    row += ",\"SAI_ACL_ENTRY_ATTR_" + attribute.substr(0, sign) + "\":\"" +
           attribute.substr(sign + 1) + '"';
  }
  return row + "}";
}
inline std::string asicRange(const std::string& id, const std::string& type,
                             const std::string& limit) {
  return "\"ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:" + id + R"(":{"SAI_ACL_RANGE_ATTR_LIMIT":")" +
         limit + R"(","SAI_ACL_RANGE_ATTR_TYPE":"SAI_ACL_RANGE_TYPE_)" + type + "\"}";
}
/// A row of fields NAME=VALUE.
inline std::string row(const std::string& key, const std::vector<std::string>& fields) {
  std::string text = "\"" + key + "\":{";
  for (const std::string& field : fields) {
    std::size_t const sign = field.find('=');
    if (text.back() != '{') text += ',';
    text += "\"" + field.substr(0, sign) + "\":\"" + field.substr(sign + 1) + '"';
  }
  return text + "}";
}

/// Reads the bundle: an entry as `show` says, a group as [ID NAME STAGE AVAILABLE TOTAL] if
/// `groups`, an error's text.
inline std::vector<std::string> readSonic(const SonicFiles& files,
                                          const std::function<std::string(const Entry&)>& show,
                                          bool groups = false) {
  std::vector<std::string> all;
  Complaints complaints;
  try {
    auto const source = openSonic(files.path(), complaints);
    for (Source::Item item; (item = source->next()) != Source::Item::end;) {
      if (item == Source::Item::entry) {
        all.push_back(show(source->entry()));
      } else if (groups) {
        const Group& group = source->group();
        auto const number = [](const std::optional<std::uint32_t>& value) {
          return value ? " " + std::to_string(*value) : std::string(" -");
        };
        all.push_back("[" + std::to_string(group.place.groupId) + " " + std::string(group.name) +
                      " " + std::string(stageName(group.place.stage).view()) +
                      number(group.availableEntries) + number(group.totalEntries) + "]");
      }
    }
  } catch (const InputError& error) {
    std::string const file = std::filesystem::path(error.file()).filename().string();
    std::string text = file.starts_with("tcamshow_sonic_") ? "DIR" : file;
    if (error.line() != 0) (text += ':') += std::to_string(error.line());
    all.push_back(text + ": " + error.message());
  }
  return all;
}

}  // namespace tcamshow
