#include "views/List.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "io/JsonText.h"
#include "io/Nearest.h"
#include "io/SafeText.h"
#include "match/FieldText.h"
#include "views/Colour.h"
#include "views/EntryJson.h"
#include "views/FillShadow.h"
#include "views/JsonPrinter.h"
#include "views/MatchText.h"
#include "views/TextOutput.h"
#include "views/TextTable.h"

namespace tcamshow {

namespace {

/// A set of names of fields, a bit for each at its index in fieldNames().
using NameBits = std::uint32_t;

NameBits bitOf(const FieldName& name) noexcept {
  return NameBits{1} << static_cast<unsigned>(&name - fieldNames().data());
}

const FieldName& dscp() noexcept { return *fieldByName("dscp"); }
const FieldName& icmpType() noexcept { return *fieldByName("icmp-type"); }
const FieldName& icmpCode() noexcept { return *fieldByName("icmp-code"); }

/// One line of the list, before it is text.
struct Line {
  const Entry& entry;
  const MatchText& match;
  std::string_view groupName;
  NameBits shown;  ///< the fields that have a column of their own
};

bool isIcmp(const Match& match) noexcept {
  const FieldSet& protocol = match[Field::proto];
  return protocol.isExact() &&
         (protocol.low() == protocolNumberIcmp || protocol.low() == protocolNumberIcmp6);
}

/// The first of the fields that the entry names, or null.
const FieldName* firstNamed(const MatchText& match, std::span<const Field> fields) {
  auto const* const found = std::find_if(fields.data(), fields.data() + fields.size(),
                                         [&](Field field) { return match.isNamed(field); });
  return found == fields.data() + fields.size() ? nullptr : &nameOf(*found);
}
constexpr std::array sourceFields{Field::src, Field::src6, Field::smac};
constexpr std::array destinationFields{Field::dst, Field::dst6, Field::dmac};

void appendField(std::string& out, const MatchText& match, const FieldName* name) {
  if (name == nullptr || !match.isNamed(name->field)) {
    out += '*';
  } else {
    match.append(out, *name);
  }
}

/// A port; where it carries an ICMP type or code alone, that stands among the other fields.
void appendPort(std::string& out, const MatchText& match, Field field, const FieldName& part) {
  bool const isElsewhere = isIcmp(match.match()) && match.isPart(part);
  appendField(out, match, isElsewhere ? nullptr : &nameOf(field));
}

void appendSafeText(std::string& out, std::string_view text) {
  appendSafe(out, text, LineBreaks::escaped);
}

/// Fields that have no column, as NAME=VALUES, then the match that no field can say, in quotes.
void appendOthers(std::string& out, const Line& line) {
  std::size_t const begin = out.size();
  auto const add = [&](const FieldName& name) {
    if (out.size() != begin) out += ' ';
    out += name.name;
    out += '=';
    line.match.append(out, name);
  };
  const MatchText& match = line.match;
  bool const hasIcmp = isIcmp(match.match());
  for (const FieldName& name : fieldNames().first(fieldCount)) {
    if (!match.isNamed(name.field)) continue;
    const FieldName* const part = name.field == Field::tc                 ? &dscp()
                                  : hasIcmp && name.field == Field::sport ? &icmpType()
                                  : hasIcmp && name.field == Field::dport ? &icmpCode()
                                                                          : nullptr;
    const FieldName& best = part != nullptr && match.isPart(*part) ? *part : name;
    // A port's own column leaves out what is an ICMP type or code.
    bool const isPort = name.field == Field::sport || name.field == Field::dport;
    NameBits const columns = isPort && &best != &name ? bitOf(best) : bitOf(best) | bitOf(name);
    if ((line.shown & columns) == 0) add(best);
  }
  if (line.entry.otherMatch.empty()) return;
  if (out.size() != begin) out += ' ';
  out += '"';
  appendSafeText(out, line.entry.otherMatch);
  out += '"';
}

template <auto member>
void number(std::string& out, const Line& line) {
  appendNumber(out, line.entry.*member);
}
template <auto member>
void placeNumber(std::string& out, const Line& line) {
  appendNumber(out, line.entry.place.*member);
}
template <auto member>
void text(std::string& out, const Line& line) {
  appendSafeText(out, line.entry.*member);
}
template <Field field>
void fieldCell(std::string& out, const Line& line) {
  appendField(out, line.match, &nameOf(field));
}
template <const FieldName& (*part)()>
void partCell(std::string& out, const Line& line) {
  bool const isThere = &part() == &dscp() || isIcmp(line.match.match());
  appendField(out, line.match, isThere ? &part() : nullptr);
}

void appendCounter(std::string& out, std::optional<std::uint64_t> count) {
  if (count) {
    appendNumber(out, *count);
  } else {
    out += '-';
  }
}

Colour colourOfState(const Line& line) {
  switch (stateOf(line.entry)) {
    case EntryState::failed:
      return Colour::bad;
    case EntryState::programmed:
      return Colour::none;
    default:
      return Colour::waiting;
  }
}

}  // namespace

/// A column: a row of the table below.
class ListColumn {
 public:
  const char* name;
  const char* heading;
  const char* help;
  bool isNumber;  ///< stands at the right of its column
  void (*cell)(std::string& out, const Line& line);
  NameBits (*shown)(const Line& line) = nullptr;  ///< the fields that it shows of a line
  Colour (*colour)(const Line& line) = nullptr;
};

namespace {

constexpr std::size_t usualColumns = 13;

template <Field field>
NameBits shows(const Line&) {
  return bitOf(nameOf(field));
}
template <const FieldName& (*part)()>
NameBits showsPart(const Line&) {
  return bitOf(part());
}
NameBits showsSource(const Line& line) {
  const FieldName* const name = firstNamed(line.match, sourceFields);
  return name == nullptr ? 0 : bitOf(*name);
}
NameBits showsDestination(const Line& line) {
  const FieldName* const name = firstNamed(line.match, destinationFields);
  return name == nullptr ? 0 : bitOf(*name);
}

constexpr std::array allColumns = std::to_array<ListColumn>({
    // Those that are usual come first.
    {"state", "", "! failed, ~ pending, ? unknown; blank: programmed", false,
     [](std::string& out, const Line& line) {
       EntryState const state = stateOf(line.entry);
       if (state != EntryState::programmed) out += markOf(state);
     },
     nullptr, colourOfState},
    {"sequence", "SEQ", "the sequence number", true, number<&Entry::sequence>},
    {"priority", "PRIORITY", "the priority in the TCAM; higher ones match first", true,
     number<&Entry::priority>},
    {"action", "ACTION", "what the entry does", false, text<&Entry::action>, nullptr,
     [](const Line& line) { return colourOfAction(line.entry.action); }},
    {"proto", "PROTO", "the IP protocol", false, fieldCell<Field::proto>, shows<Field::proto>},
    {"source", "SOURCE", "the source address: IPv4, IPv6 or else MAC", false,
     [](std::string& out, const Line& line) {
       appendField(out, line.match, firstNamed(line.match, sourceFields));
     },
     showsSource},
    {"sport", "SPORT", "the source port", false,
     [](std::string& out, const Line& line) {
       appendPort(out, line.match, Field::sport, icmpType());
     },
     shows<Field::sport>},
    {"destination", "DESTINATION", "the destination address: IPv4, IPv6 or else MAC", false,
     [](std::string& out, const Line& line) {
       appendField(out, line.match, firstNamed(line.match, destinationFields));
     },
     showsDestination},
    {"dport", "DPORT", "the destination port", false,
     [](std::string& out,
        const Line& line) { appendPort(out, line.match, Field::dport, icmpCode()); },
     shows<Field::dport>},
    {"vlan", "VLAN", "the outer VLAN", false, fieldCell<Field::vlan>, shows<Field::vlan>},
    {"other", "OTHER", "the fields that have no column, and in quotes what no field can say", false,
     appendOthers},
    {"hits", "HITS", "the packets counted; - if the counters are not programmed", true,
     [](std::string& out, const Line& line) { appendCounter(out, hitsOf(line.entry)); }, nullptr,
     [](const Line& line) { return hitsOf(line.entry) == 0U ? Colour::dim : Colour::none; }},
    {"id", "ID", "the number of its shadow", true, number<&Entry::shadowId>},
    // The others.
    {"table", "TABLE", "ip, ip6, mac or tcam", false,
     [](std::string& out, const Line& line) { out += tableName(line.entry.table); }},
    {"feature", "FEATURE", "the feature that owns the entry", false, text<&Entry::feature>},
    {"featurePriority", "FEATURE-PRIORITY", "the feature's priority", true,
     number<&Entry::featurePriority>},
    {"bytes", "BYTES", "the bytes counted; - if they are not reported", true,
     [](std::string& out, const Line& line) { appendCounter(out, bytesOf(line.entry)); }},
    {"since", "SINCE", "with --since: new, or reset if a counter fell", false,
     [](std::string& out, const Line& line) {
       if (line.entry.since) out += sinceMarkName(line.entry.since->mark);
     }},
    {"description", "DESCRIPTION", "the entry's text", false, text<&Entry::description>},
    {"reason", "REASON", "why the entry is in its state", false, text<&Entry::reason>},
    {"src", "SRC", "the IPv4 source address", false, fieldCell<Field::src>, shows<Field::src>},
    {"dst", "DST", "the IPv4 destination address", false, fieldCell<Field::dst>, shows<Field::dst>},
    {"src6", "SRC6", "the IPv6 source address", false, fieldCell<Field::src6>, shows<Field::src6>},
    {"dst6", "DST6", "the IPv6 destination address", false, fieldCell<Field::dst6>,
     shows<Field::dst6>},
    {"smac", "SMAC", "the MAC source address", false, fieldCell<Field::smac>, shows<Field::smac>},
    {"dmac", "DMAC", "the MAC destination address", false, fieldCell<Field::dmac>,
     shows<Field::dmac>},
    {"ethertype", "ETHERTYPE", "the ether type", false, fieldCell<Field::ethertype>,
     shows<Field::ethertype>},
    {"tc", "TC", "the traffic class or type-of-service byte", false, fieldCell<Field::tc>,
     shows<Field::tc>},
    {"dscp", "DSCP", "the upper six bits of tc", false, partCell<dscp>, showsPart<dscp>},
    {"frag", "FRAG", "whether the packet is a fragment", false, fieldCell<Field::frag>,
     shows<Field::frag>},
    {"flags", "FLAGS", "the TCP flags", false, fieldCell<Field::flags>, shows<Field::flags>},
    {"icmp-type", "ICMP-TYPE", "the type of ICMP", false, partCell<icmpType>, showsPart<icmpType>},
    {"icmp-code", "ICMP-CODE", "the code of ICMP", false, partCell<icmpCode>, showsPart<icmpCode>},
    {"hoplimit", "HOPLIMIT", "the hop limit of IPv6", false, fieldCell<Field::hoplimit>,
     shows<Field::hoplimit>},
    {"length", "LENGTH", "the IP length in bytes", false, fieldCell<Field::length>,
     shows<Field::length>},
    {"stage", "STAGE", "lookup, ingress or egress", false,
     [](std::string& out, const Line& line) { out += stageName(line.entry.place.stage).view(); }},
    {"pipe", "PIPE", "the pipe", true, placeNumber<&Place::pipe>},
    {"groupPriority", "GROUP-PRIORITY", "the group's priority", true,
     placeNumber<&Place::groupPriority>},
    {"group", "GROUP", "the group's id", true, placeNumber<&Place::groupId>},
    {"copy", "COPY", "the copy of the group", true, placeNumber<&Place::copyId>},
    {"name", "NAME", "the group's name", false,
     [](std::string& out, const Line& line) { appendSafeText(out, line.groupName); }},
});

/// When a file's entries were so.
void appendMoment(std::string& out, const Header& header, std::string_view fileName) {
  out += header.takenAt.isGiven() ? header.takenAt.text : std::string_view("an unknown time");
  out += " (";
  appendSafeText(out, fileName);
  out += ')';
}

/// Prints the entries of one place.
class PlaceList {
 public:
  PlaceList(const EntryStore& store, const ListedPlace& place, const ListOptions& options,
            OutputBuffer& out)
      : store_(store), place_(*place.info), numbers_(place.entries), options_(options), out_(out) {}

  void show() {
    showHeading();
    if (numbers_.empty()) return;
    for (const ListColumn* const column : options_.columns) {
      widths_.push_back(textWidth(column->heading));
    }
    forEachLine([this](const Line& line) {
      for (std::size_t i = 0; i < widths_.size(); ++i) {
        widths_[i] = std::max(widths_[i], textWidth(cellOf(*options_.columns[i], line)));
      }
    });
    for (std::size_t i = 0; i < widths_.size(); ++i) {
      const ListColumn& column = *options_.columns[i];
      add(column, i, column.heading, Colour::none);
    }
    lineEnd();
    forEachLine([this](const Line& line) {
      for (std::size_t i = 0; i < widths_.size(); ++i) {
        const ListColumn& column = *options_.columns[i];
        bool const hasColour = options_.isColoured && column.colour != nullptr;
        add(column, i, cellOf(column, line), hasColour ? column.colour(line) : Colour::none);
      }
      lineEnd();
    });
  }

 private:
  void showHeading() {
    const Place& at = place_.place;
    std::string heading(stageName(at.stage).view());
    auto const add = [&heading](std::string_view what, auto value) {
      (heading += ' ') += what;
      heading += ' ';
      appendNumber(heading, value);
    };
    add("pipe", at.pipe);
    add("group", at.groupId);
    if (!place_.name.empty()) {
      heading += " \"";
      appendSafeText(heading, place_.name);
      heading += '"';
    }
    add("priority", at.groupPriority);
    add("copy", at.copyId);
    heading += ": ";
    appendNumber(heading, numbers_.size());
    heading += numbers_.size() == 1 ? " entry" : " entries";
    auto const addReported = [&](std::optional<std::uint32_t> value, std::string_view what) {
      if (!value) return;
      heading += ", ";
      appendNumber(heading, *value);
      (heading += ' ') += what;
    };
    addReported(place_.availableEntries, "available");
    addReported(place_.freeEntries, "free");
    addReported(place_.totalEntries, "total");
    heading += '\n';
    out_.write(heading);
  }

  template <class Use>
  void forEachLine(const Use& use) {
    Entry scratch;
    for (std::uint32_t const number : numbers_) {
      const Entry& entry = store_.entry(number, scratch);
      MatchText const match(entry);
      Line line{entry, match, place_.name, 0};
      for (const ListColumn* const column : options_.columns) {
        if (column->shown != nullptr) line.shown |= column->shown(line);
      }
      use(line);
    }
  }

  const std::string& cellOf(const ListColumn& column, const Line& line) {
    cell_.clear();
    column.cell(cell_, line);
    return cell_;
  }

  /// Adds a cell to the line. Blanks are owed until something follows them.
  void add(const ListColumn& column, std::size_t index, std::string_view cell, Colour colour) {
    std::size_t const width = widths_[index];
    if (width == 0) return;
    if (!isFirst_) owed_ += 2;
    isFirst_ = false;
    std::size_t const blanks = width - textWidth(cell);
    if (column.isNumber) owed_ += blanks;
    if (!cell.empty()) {
      line_.append(owed_, ' ');
      owed_ = 0;
      if (colour == Colour::none) {
        line_ += cell;
      } else {
        line_ += coloured(colour, cell);
      }
    }
    if (!column.isNumber) owed_ += blanks;
  }
  void lineEnd() {
    line_ += '\n';
    out_.write(line_);
    line_.clear();
    owed_ = 0;
    isFirst_ = true;
  }

  const EntryStore& store_;
  const PlaceInfo& place_;
  std::span<const std::uint32_t> numbers_;
  const ListOptions& options_;
  OutputBuffer& out_;
  std::vector<std::size_t> widths_;
  std::string cell_;
  std::string line_;
  std::size_t owed_ = 0;
  bool isFirst_ = true;
};

}  // namespace

std::vector<const ListColumn*> listColumnsFromText(std::string_view text) {
  std::vector<const ListColumn*> columns;
  for (std::size_t at = 0;;) {
    std::size_t const end = std::min(text.find(',', at), text.size());
    std::string_view const name = text.substr(at, end - at);
    auto const* const found = std::find_if(allColumns.begin(), allColumns.end(),
                                           [=](const ListColumn& one) { return one.name == name; });
    if (found == allColumns.end()) {
      std::vector<std::string_view> names;
      names.reserve(allColumns.size());
      for (const ListColumn& column : allColumns) names.emplace_back(column.name);
      throw TextFault(at, inQuotes(name) + " is no column" + suggestion(name, names) +
                              "; --columns help lists them");
    }
    columns.push_back(found);
    if (end == text.size()) return columns;
    at = end + 1;
  }
}

std::vector<const ListColumn*> usualListColumns() {
  std::vector<const ListColumn*> columns;
  for (std::size_t i = 0; i < usualColumns; ++i) columns.push_back(&allColumns[i]);
  return columns;
}

std::vector<const ListColumn*> usualListColumnsSince() {
  std::vector<const ListColumn*> columns = usualListColumns();
  columns.insert(columns.end() - 1, listColumnsFromText("since").front());
  return columns;
}

void showListColumns(OutputBuffer& out) {
  std::size_t width = 0;
  for (const ListColumn& column : allColumns) width = std::max(width, textWidth(column.name));
  for (std::size_t i = 0; i < allColumns.size(); ++i) {
    std::string line(allColumns[i].name);
    line.append(width + 2 - line.size(), ' ');
    line += allColumns[i].help;
    out.write((line += '\n'));
    if (i + 1 == usualColumns) out.write("\n");
  }
}

void showList(const Listing& listing, const ListOptions& options, OutputBuffer& out) {
  if (options.baseline != nullptr) {
    std::string heading = "hits and bytes from ";
    appendMoment(heading, options.baseline->header(), options.baseline->fileName());
    heading += " to ";
    appendMoment(heading, listing.store().header(), listing.store().fileName());
    out.write(heading += "\n\n");
  }
  for (const ListedPlace& place : listing.places()) {
    if (&place != listing.places().data()) out.write("\n");
    PlaceList(listing.store(), place, options, out).show();
  }
  if (listing.places().empty()) out.write("no entries\n");
}

void showListJson(const Listing& listing, OutputBuffer& out) {
  JsonPrinter printer(out);
  printer.objectBegin();
  printer.attribute("type", "list");
  printer.attribute("schema", jsonSchemaVersion);
  printer.objectEnd();
  Entry scratch;
  for (const ListedPlace& place : listing.places()) {
    for (std::uint32_t const number : place.entries) {
      listing.store().entry(number, scratch);
      scratch.givenState = stateOf(scratch);
      printEntry(scratch, *shadowOf(scratch), printer);
    }
  }
}

}  // namespace tcamshow
