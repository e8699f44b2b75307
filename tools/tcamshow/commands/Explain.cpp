#include "views/Explain.h"

#include "commands/Commands.h"
#include "commands/PlaceWhere.h"

namespace tcamshow {
namespace {

Packets packetsOf(const std::string& text) {
  try {
    return packetsFromText(text);
  } catch (const TextFault& fault) {
    throw CommandLineError("PACKET: column " + std::to_string(fault.at() + 1) + ": " +
                           fault.what());
  }
}

/// `explain PACKET [FILE]`
class ExplainCommand final : public Command {
 public:
  ExplainCommand()
      : Command("explain", "Which entry a packet hits, and which could hit it",
                "explain 'tcp dst=192.0.2.80 dport=443' acl.jsonl") {}

  bool hasJson() const noexcept override { return true; }

  ExitStatus run(const Run& run) override {
    where_.read();
    Packets const packets = packetsOf(packet_);
    auto const source = file_.open(run.complaints);
    // A place's name is known at the end of the input alone.
    MeetingEntries const entries(*source, packets,
                                 [this](const Place& place) { return where_.mayHold(place); });
    ExplainView view(run.out, run.options.json);
    bool hasPlace = false;
    for (const PlaceInfo& place : entries.store().places()) {
      if (place.entries.empty() || !where_.holds(place.place, place.name)) continue;
      hasPlace = true;
      view.show(entries.store(), place, explain(entries.store(), place, packets),
                entries.named(place.place));
    }
    if (!hasPlace) view.showNothing(packet_);
    return ExitStatus::done;
  }

 private:
  void declareOptions(Options& options) override {
    options.argument(
        "PACKET", packet_,
        "Protocols (tcp, udp, icmp, icmp6, ip, ip6) and FIELD=VALUES, in one argument;\n"
        "a field that is not named has any value");
    where_.declare(options);
    file_.declare(options);
  }

  std::string packet_;
  PlaceWhere where_;
  SourceFile file_;
};

}  // namespace

std::unique_ptr<Command> explainCommand() { return std::make_unique<ExplainCommand>(); }

}  // namespace tcamshow
