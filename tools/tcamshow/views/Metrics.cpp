#include "views/Metrics.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "io/JsonText.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

/// A metric family: samples of one name.
struct Family {
  std::string_view name;  ///< without the suffix of a counter's samples
  bool isCounter;
  std::string_view help;
};

constexpr Family entriesFamily{"tcam_entries", false,
                               "Entries of a feature, whatever their state."};
constexpr Family byStateFamily{"tcam_entries_by_state", false, "Entries in each state."};
constexpr Family availableFamily{"tcam_available_entries", false,
                                 "How many more entries the copy can take."};
constexpr Family freeFamily{"tcam_free_entries", false, "Rows of the hardware that nobody uses."};
constexpr Family totalFamily{"tcam_total_entries", false, "The size of the copy in entries."};
constexpr Family rangesFamily{"tcam_range_checkers", false,
                              "Different range checkers of each kind."};
constexpr Family findingsFamily{"tcam_lint_findings", false, "Findings of lint in each class."};
constexpr Family hitsFamily{"tcam_hits", true, "Packets that hit the entry."};
constexpr Family bytesFamily{"tcam_bytes", true, "Bytes of the packets that hit the entry."};
constexpr Family timeFamily{"tcam_snapshot_timestamp_seconds", false,
                            "When the snapshot was taken, in seconds since 1970."};

/// Appends a text as the value of a label. Both formats escape alike. The text is made safe first:
/// the formats have no escapes for other characters.
void appendLabelValue(std::string& out, std::string_view text) {
  forEachSafePiece(text, LineBreaks::kept, [&out](std::string_view piece) {
    for (char const c : piece) {
      if (c == '\n') {
        out += "\\n";
        continue;
      }
      if (c == '\\' || c == '"') out += '\\';
      out += c;
    }
  });
}

/// Appends `NAME="VALUE"`, behind a comma unless it is the first.
template <class AppendValue>
void appendLabel(std::string& out, std::string_view name, const AppendValue& appendValue) {
  if (!out.empty()) out += ',';
  out += name;
  out += "=\"";
  appendValue();
  out += '"';
}
void appendTextLabel(std::string& out, std::string_view name, std::string_view text) {
  appendLabel(out, name, [&] { appendLabelValue(out, text); });
}
template <class Integer>
void appendNumberLabel(std::string& out, std::string_view name, Integer number) {
  appendLabel(out, name, [&] { appendNumber(out, number); });
}

std::string placeLabels(const Place& place, std::string_view name) {
  std::string labels;
  appendTextLabel(labels, "stage", stageName(place.stage).view());
  appendNumberLabel(labels, "pipe", place.pipe);
  appendNumberLabel(labels, "group", place.groupId);
  appendTextLabel(labels, "name", name);
  appendNumberLabel(labels, "copy", place.copyId);
  return labels;
}

/// The labels of each place. Places that differ in the priority of the group alone get it as one
/// more label: two series must not have the same labels.
std::vector<std::string> labelsOf(std::span<const PlaceMeasures> places) {
  std::vector<std::string> labels;
  labels.reserve(places.size());
  std::map<std::string_view, std::size_t> counts;
  for (const PlaceMeasures& place : places) {
    labels.push_back(placeLabels(place.use.place, place.use.name));
  }
  for (const std::string& each : labels) ++counts[each];
  std::vector<bool> isShared(labels.size());
  for (std::size_t i = 0; i < labels.size(); ++i) isShared[i] = counts[labels[i]] > 1;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (isShared[i]) {
      appendNumberLabel(labels[i], "group_priority", places[i].use.place.groupPriority);
    }
  }
  return labels;
}

/// The digits of a number that is not negative.
void appendDigits(std::string& out, Number number) {
  constexpr std::uint64_t billions = 1'000'000'000'000'000'000;
  if (number < billions) return appendNumber(out, static_cast<std::uint64_t>(number));
  appendDigits(out, number / billions);
  std::string const low = std::to_string(static_cast<std::uint64_t>(number % billions));
  out.append(18 - low.size(), '0');
  out += low;
}

/// Seconds with as many decimals as there are.
std::string secondsText(const Time& time) {
  std::int64_t seconds = time.seconds;
  std::uint32_t nanoseconds = time.nanoseconds;
  std::string text;
  if (seconds < 0) {
    text = "-";
    if (nanoseconds != 0) {
      ++seconds;
      nanoseconds = 1'000'000'000 - nanoseconds;
    }
    seconds = -seconds;
  }
  text += std::to_string(seconds);
  if (nanoseconds == 0) return text;
  std::string decimals = std::to_string(nanoseconds);
  decimals.insert(0, 9 - decimals.size(), '0');
  decimals.erase(decimals.find_last_not_of('0') + 1);
  return text + '.' + decimals;
}

/// Writes families one after another. A family without samples is left out.
class MetricsWriter {
 public:
  MetricsWriter(std::span<const PlaceMeasures> places, MetricsFormat format, OutputBuffer& out)
      : places_(places), labels_(labelsOf(places)), format_(format), out_(out) {}

  /// Calls `use(place, labels)` for each place. It gives samples to sample().
  template <class Use>
  void family(const Family& family, const Use& use) {
    begin(family);
    for (std::size_t i = 0; i < places_.size(); ++i) use(places_[i], labels_[i]);
  }
  /// A gauge of numbers that may not be reported.
  template <class NumberOf>
  void reported(const Family& gauge, const NumberOf& numberOf) {
    family(gauge, [&](const PlaceMeasures& place, const std::string& labels) {
      if (auto const number = numberOf(place.use.reported)) sample(labels, *number);
    });
  }
  /// A counter of ids.
  template <class NumberOf>
  void byId(const Family& counter, const NumberOf& numberOf) {
    family(counter, [&](const PlaceMeasures& place, const std::string& labels) {
      for (const IdCounters& counters : place.counters) {
        auto const number = numberOf(counters);
        if (!number) continue;
        more_ = labels;
        appendNumberLabel(more_, "id", counters.id);
        sample(more_, *number);
      }
    });
  }
  /// A sample with one label more.
  void sample(const std::string& labels, std::string_view name, std::string_view value,
              Number number) {
    more_ = labels;
    appendTextLabel(more_, name, value);
    sample(more_, number);
  }
  void sample(const std::string& labels, Number number) {
    line_.clear();
    appendDigits(line_, number);
    write(labels, line_);
  }
  void single(const Family& gauge, std::string_view value) {
    begin(gauge);
    write({}, value);
  }

 private:
  void begin(const Family& family) {
    family_ = &family;
    hasSample_ = false;
  }
  bool isSuffixed() const noexcept { return format_ == MetricsFormat::prometheus; }

  void appendName(bool withSuffix) {
    text_ += family_->name;
    if (family_->isCounter && withSuffix) text_ += "_total";
  }
  void write(std::string_view labels, std::string_view value) {
    text_.clear();
    if (!hasSample_) {
      hasSample_ = true;
      // The older format names a counter as its samples are named.
      text_ += "# TYPE ";
      appendName(isSuffixed());
      text_ += family_->isCounter ? " counter\n# HELP " : " gauge\n# HELP ";
      appendName(isSuffixed());
      text_ += ' ';
      text_ += family_->help;
      text_ += '\n';
    }
    appendName(true);
    if (!labels.empty()) {
      text_ += '{';
      text_ += labels;
      text_ += '}';
    }
    text_ += ' ';
    text_ += value;
    text_ += '\n';
    out_.write(text_);
  }

  std::span<const PlaceMeasures> places_;
  std::vector<std::string> labels_;
  MetricsFormat format_;
  OutputBuffer& out_;
  const Family* family_ = nullptr;
  bool hasSample_ = false;
  std::string line_;
  std::string more_;
  std::string text_;
};

}  // namespace

void showMetrics(std::span<const PlaceMeasures> places, const Time& takenAt,
                 LintClasses lintClasses, MetricsFormat format, OutputBuffer& out) {
  MetricsWriter writer(places, format, out);
  writer.family(entriesFamily, [&](const PlaceMeasures& place, const std::string& labels) {
    // By the value of the label: names that differ in unsafe characters may become equal.
    std::map<std::string, std::uint64_t> counts;
    for (auto const& [feature, count] : place.use.byFeature) counts[safeText(feature)] += count;
    for (auto const& [feature, count] : counts) writer.sample(labels, "feature", feature, count);
  });
  writer.family(byStateFamily, [&](const PlaceMeasures& place, const std::string& labels) {
    for (std::size_t i = 0; i < entryStateCount; ++i) {
      writer.sample(labels, "state", stateName(static_cast<EntryState>(i)), place.use.byState[i]);
    }
  });
  writer.reported(availableFamily, [](const ReportedEntries& all) { return all.available; });
  writer.reported(freeFamily, [](const ReportedEntries& all) { return all.free; });
  writer.reported(totalFamily, [](const ReportedEntries& all) { return all.total; });
  writer.family(rangesFamily, [&](const PlaceMeasures& place, const std::string& labels) {
    for (std::size_t i = 0; i < place.rangeCheckers.size(); ++i) {
      writer.sample(labels, "kind", rangeCheckerList()[i].name, place.rangeCheckers[i]);
    }
  });
  writer.family(findingsFamily, [&](const PlaceMeasures& place, const std::string& labels) {
    for (std::size_t i = 0; i < lintClassCount; ++i) {
      auto const kind = static_cast<LintClass>(i);
      if ((lintClasses & bitOf(kind)) == 0) continue;
      writer.sample(labels, "class", lintClassName(kind), place.findings[i]);
    }
  });
  writer.byId(hitsFamily, [](const IdCounters& counters) { return counters.hits; });
  writer.byId(bytesFamily, [](const IdCounters& counters) { return counters.bytes; });
  if (takenAt.isGiven()) writer.single(timeFamily, secondsText(takenAt));
  if (format == MetricsFormat::openmetrics) out.write("# EOF\n");
}

}  // namespace tcamshow
