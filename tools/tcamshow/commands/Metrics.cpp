#include "views/Metrics.h"

#include "commands/Commands.h"
#include "questions/Lint.h"

namespace tcamshow {
namespace {

/// `metrics [FILE]`
class MetricsCommand final : public Command {
 public:
  MetricsCommand()
      : Command("metrics", "The numbers for a metrics system, such as entries and free rows",
                "metrics --format prometheus --lint acl.jsonl") {}

  ExitStatus run(const Run& run) override {
    MeasuresAsked asked;
    if (hasLint_) asked.findings = usualLintClasses;
    asked.counters = isPerEntry_;
    // Nothing is printed before all is read: half of the metrics would look like all.
    EntryStore const store(*file_.open(run.complaints));
    showMetrics(measuresOf(store, asked, run.complaints), store.header().takenAt, asked.findings,
                format_ == formats[0] ? MetricsFormat::openmetrics : MetricsFormat::prometheus,
                run.out);
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.choice("--format", format_, formats,
                   "The text format; prometheus is for a textfile collector");
    options.flag("--per-entry", isPerEntry_, "The hits and bytes of each entry too, by its id");
    options.flag("--lint", hasLint_, "The number of findings of lint too");
    file_.declare(options);
  }

  static constexpr std::string_view formats[] = {"openmetrics", "prometheus"};
  std::string format_{formats[0]};
  bool isPerEntry_ = false;
  bool hasLint_ = false;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> metricsCommand() { return std::make_unique<MetricsCommand>(); }

}  // namespace tcamshow
