#include "snapshot/SnapshotWriter.h"

#include <algorithm>
#include <concepts>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

#include "io/InputError.h"
#include "io/JsonText.h"
#include "io/LineReader.h"
#include "snapshot/AddressText.h"
#include "snapshot/Members.h"

namespace tcamshow {
namespace {

// A record has members, which have values, which have records.
template <class Owner, class Value>
void appendMember(std::string& out, const Member<Owner, Value>& member, const Value& value);

// --- values, each by its type in the model

void appendValue(std::string& out, const SnapshotVersion& version) {
  appendNumber(out, version.number);
}
template <std::integral Number>
void appendValue(std::string& out, Number number) {
  appendNumber(out, number);
}
void appendValue(std::string& out, std::string_view text) { appendJsonString(out, text); }
void appendValue(std::string& out, Stage stage) { appendJsonString(out, stageName(stage).view()); }
void appendValue(std::string& out, Table table) { appendJsonString(out, tableName(table)); }
void appendValue(std::string& out, EntryState state) { appendJsonString(out, stateName(state)); }
void appendValue(std::string& out, const Time& time) { appendJsonString(out, time.text); }
template <class Value>
void appendValue(std::string& out, const std::optional<Value>& value) {
  appendValue(out, *value);
}

/// Appends a member of which nothing is left out.
template <class Append>
void appendNamed(std::string& out, std::string_view name, const Append& append) {
  bool const isFirst = out.back() == '{';
  // One step in place of four: most of a snapshot is names.
  std::size_t const begin = out.size();
  out.resize(begin + name.size() + (isFirst ? 3 : 4));
  char* to = out.data() + begin;
  if (!isFirst) *to++ = ',';
  *to++ = '"';
  to = std::copy(name.begin(), name.end(), to);
  *to++ = '"';
  *to = ':';
  append();
}

template <class Words, class AppendWord>
void appendWords(std::string& out, const Words& words, const AppendWord& appendWord) {
  appendNamed(out, valueName, [&] { appendWord(words.value); });
  appendNamed(out, maskName, [&] { appendWord(words.mask); });
}

void appendRecord(std::string& out, const Qualifier& qualifier) {
  auto const quoted = [&out](auto appendAddress) {
    return [&out, appendAddress](const auto& address) {
      out += '"';
      appendAddress(out, address);
      out += '"';
    };
  };
  switch (qualifier.kind) {
    case QualifierKind::word:
      appendWords(out, qualifier, [&out](std::uint32_t word) { appendNumber(out, word); });
      break;
    case QualifierKind::ip:
      appendWords(out, qualifier, quoted(appendIp));
      break;
    case QualifierKind::ip6:
      appendWords(out, qualifier.ip6, quoted(appendIp6));
      break;
    case QualifierKind::mac:
      appendWords(out, qualifier.mac, quoted(appendMac));
      break;
  }
  std::apply([&](auto const&... each) { (appendMember(out, each, qualifier.*each.at), ...); },
             qualifierMembers);
}

void appendRecord(std::string& out, const RangeChecker& range) {
  std::apply([&](auto const&... each) { (appendMember(out, each, range.*each.at), ...); },
             rangeCheckerMembers);
}

std::string_view nameOf(const Qualifier& qualifier) {
  return qualifierByType(qualifier.type)->name;
}
std::string_view nameOf(const RangeChecker& range) { return rangeCheckerByType(range.type)->name; }

template <class Record>
void appendValue(std::string& out, const std::vector<Record>& records) {
  out += '{';
  for (const Record& record : records) {
    appendNamed(out, nameOf(record), [&] {
      out += '{';
      appendRecord(out, record);
      out += '}';
    });
  }
  out += '}';
}

// --- members

template <class Owner, class Value>
void appendMember(std::string& out, const Member<Owner, Value>& member, const Value& value) {
  if (member.presence == Presence::optional && isUsual(value, usualValue(member))) return;
  appendNamed(out, member.name, [&] { appendValue(out, value); });
}

template <class Line>
void appendMembers(std::string& out, const Line& line) {
  out += R"({"type":")";
  out += lineKindNames[static_cast<std::size_t>(lineKind<Line>)];
  out += '"';
  forEachMember<Line>(
      [&](auto const& member, auto) { appendMember(out, member, memberOf(line, member)); });
  out += "}\n";
}

}  // namespace

void appendLine(std::string& out, const Header& header) { appendMembers(out, header); }
void appendLine(std::string& out, const Group& group) { appendMembers(out, group); }
void appendLine(std::string& out, const Entry& entry) { appendMembers(out, entry); }
void appendLine(std::string& out, const SnapshotEnd& end) { appendMembers(out, end); }

void writeSnapshot(Source& source, OutputBuffer& out) {
  std::string line;
  Header header = source.header();
  header.version = SnapshotVersion();
  appendLine(line, header);
  SnapshotEnd end;
  for (;;) {
    if (line.size() > LineReader::longestLine) {
      throw InputError(source.fileName(), source.lineNumber(),
                       "a line of the snapshot would be longer than 1 MiB");
    }
    out.write(line);
    line.clear();
    switch (source.next()) {
      case Source::Item::end:
        appendLine(line, end);
        out.write(line);
        return;
      case Source::Item::group:
        appendLine(line, source.group());
        ++end.groups;
        break;
      case Source::Item::entry:
        appendLine(line, source.entry());
        ++end.entries;
        break;
    }
  }
}

}  // namespace tcamshow
