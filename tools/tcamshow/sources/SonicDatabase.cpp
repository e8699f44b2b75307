#include "sources/SonicDatabase.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <memory>
#include <system_error>

#include "io/Complaints.h"
#include "io/InputError.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

constexpr std::string_view names[] = {"ASIC_DB", "CONFIG_DB", "COUNTERS_DB", "STATE_DB"};

/// Keys that tell which database a file holds.
struct Mark {
  std::string_view start;
  SonicDatabaseKind kind;
};
constexpr Mark marks[] = {
    {"ASIC_STATE:", SonicDatabaseKind::asic},
    {"ACL_RULE|", SonicDatabaseKind::config},
    {"ACL_TABLE|", SonicDatabaseKind::config},
    {"DEVICE_METADATA|", SonicDatabaseKind::config},
    {"COUNTERS:", SonicDatabaseKind::counters},
    {"ACL_COUNTER_RULE_MAP", SonicDatabaseKind::counters},
    {"ACL_RULE_TABLE|", SonicDatabaseKind::state},
    {"ACL_TABLE_TABLE|", SonicDatabaseKind::state},
};
/// Keys of files that are none of the databases.
struct ForeignMark {
  std::string_view start;
  bool isWhole;  ///< whether it is the whole key
  std::string_view what;
};
constexpr ForeignMark foreignMarks[] = {
    {"ACL_RULE_TABLE:", false, "APPL_DB"},
    {"ACL_TABLE_TABLE:", false, "APPL_DB"},
    {"ROUTE_TABLE:", false, "APPL_DB"},
    {"ACL_RULE", true, "the switch's configuration file"},
    {"ACL_TABLE", true, "the switch's configuration file"},
    {"DEVICE_METADATA", true, "the switch's configuration file"},
};

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

/// The database that a file's name names, or the number of databases.
std::size_t databaseOfFile(const std::string& fileName) {
  std::string name = lower(fileName);
  if (name.ends_with(".gz")) name.resize(name.size() - 3);
  return static_cast<std::size_t>(std::find_if(std::begin(names), std::end(names),
                                               [&](std::string_view each) {
                                                 return name == lower(std::string(each)) + ".json";
                                               }) -
                                  std::begin(names));
}

struct CloseDirectory {
  void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

[[noreturn]] void failToRead(const std::string& path) {
  throw InputError(path, 0, "cannot read the directory: " + std::generic_category().message(errno));
}

std::string inDirectory(const std::string& path, std::string_view name) {
  std::string file = path;
  if (!file.ends_with('/')) file += '/';
  return file += name;
}

}  // namespace

std::string_view databaseName(SonicDatabaseKind kind) noexcept {
  return names[static_cast<std::size_t>(kind)];
}

SonicDirectory::SonicDirectory(const std::string& path) {
  // std::filesystem ends the process where it lacks memory for a directory.
  std::unique_ptr<DIR, CloseDirectory> const directory(::opendir(path.c_str()));
  if (directory == nullptr) failToRead(path);
  std::string found[std::size(names)];
  for (;;) {
    errno = 0;
    const dirent* const each = ::readdir(directory.get());
    if (each == nullptr) break;
    std::string const name = each->d_name;
    std::size_t const database = databaseOfFile(name);
    if (database == std::size(names)) continue;
    std::string& other = found[database];
    if (!other.empty()) {
      // The order in a directory is by chance.
      throw InputError(path, 0,
                       "both " + shownName(std::min(name, other)) + " and " +
                           shownName(std::max(name, other)) + " are there: which one is meant?");
    }
    other = name;
    files_[database] = inDirectory(path, name);
  }
  if (errno != 0) failToRead(path);
  if (fileOf(SonicDatabaseKind::asic)) return;
  std::string message = "the directory holds no ASIC_DB.json, so it is no SONiC bundle";
  struct stat dump {};
  if (::stat(inDirectory(path, "dump").c_str(), &dump) == 0) {
    message += "; an archive has it in dump";
  }
  throw InputError(path, 0, message);
}

SonicDatabase::SonicDatabase(const std::string& path, SonicDatabaseKind kind)
    : kind_(kind), document_(InputFile(path), largest) {}

void SonicDatabase::eachRow(std::span<const std::string_view> starts, const UseRow& use) {
  std::string_view wrong;
  bool isSure = false;  // whether a key was seen that only this database has
  auto const wants = [&](std::string_view start, bool isWhole) {
    for (const Mark& mark : marks) {
      if (!start.starts_with(mark.start)) continue;
      if (mark.kind == kind_) {
        isSure = true;
      } else {
        wrong = databaseName(mark.kind);
      }
    }
    for (const ForeignMark& mark : foreignMarks) {
      if (mark.isWhole ? isWhole && start == mark.start : start.starts_with(mark.start)) {
        wrong = mark.what;
      }
    }
    if (!wrong.empty()) {
      throw InputError(
          fileName(), document_.lineOf(start.data()),
          "this is " + std::string(wrong) + ", not " + std::string(databaseName(kind_)));
    }
    return std::any_of(starts.begin(), starts.end(), [&](std::string_view each) {
      return start.starts_with(each) || (!isWhole && each.starts_with(start));
    });
  };
  document_.eachWanted(wants, [&](std::string_view key, std::string_view row) {
    if (std::none_of(starts.begin(), starts.end(),
                     [&](std::string_view each) { return key.starts_with(each); })) {
      return;
    }
    if (!row.starts_with('{')) fail(row.data(), key, "the row is not an object");
    use(key, row);
  });
  document_.visited();
  if (kind_ == SonicDatabaseKind::asic && !isSure) {
    throw InputError(fileName(), 0, "no key begins with ASIC_STATE:, so this is no ASIC_DB");
  }
}

void SonicDatabase::eachField(std::string_view row, const JsonFields::UseField& use) {
  std::string_view const inner = fields_.objectAt(row, "value");
  fields_.each(inner.empty() ? row : inner, use);
}

void SonicDatabase::fail(const char* at, std::string_view key, std::string_view message) const {
  throw InputError(fileName(), document_.lineOf(at), shownName(key) + ": " + std::string(message));
}

std::string SonicDatabase::warning(std::string_view key, std::string_view row,
                                   std::string_view message) const {
  return warningText(fileName(), document_.lineOf(row.data()),
                     shownName(key) + ": " + std::string(message));
}

bool objectIdFromText(std::string_view text, std::uint64_t& id) noexcept {
  constexpr std::string_view start = "oid:0x";
  if (!text.starts_with(start)) return false;
  text.remove_prefix(start.size());
  std::uint64_t read = 0;
  const char* const end = text.data() + text.size();
  auto const [at, error] = std::from_chars(text.data(), end, read, 16);
  if (at != end || error != std::errc()) return false;
  id = read;
  return true;
}

}  // namespace tcamshow
