// A user's first lines with each header, compiled with the warnings that careful projects turn on.
// Templates and macros cause warnings in the code that uses them.
#include "Halvo.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel.h"

namespace {

struct Tag {
  static Halvo::MemoryTracker memAllocationTracker_;
};
constinit Halvo::MemoryTracker Tag::memAllocationTracker_{"Tag"};

class PermitFormat : public VelmorTcam::IpEntryRequestCliFormat {
 public:
  Halvo::String formatActions(const PtrConst&) const override {
    return Zel::_fmt("%-6s|", "permit");
  }
};
static_assert(VelmorTcam::CompleteFormatter<PermitFormat>);

ZEL_LOG_DESCRIPTORS(messages, {"LINK_DOWN", "Link of port %s went down",
                               "The port lost its carrier.", "", 4});

}  // namespace

Halvo::String use(int descriptor) {
  using namespace VelmorTcam;
  auto const shadow = Halvo::makePtr<VelmorTcamEntryShadow>(17);
  shadow->hwQualIs(qualifierSrcIp, Qualifier(0x0A000000, 0xFF000000));
  shadow->rangeCheckerIs(rangeCheckerL4DstPort, RangeCheckerStatus(1024, 2000));
  auto const format = Halvo::makePtr<PermitFormat>();
  format->displayEntryRequest(static_cast<Halvo::U32>(descriptor), RequestKey("office"), RuleId(10),
                              "", shadow, 42, nullptr);

  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  auto const copy = chip->stageInfoIs(stageTypeIngress)
                        ->pipeInfoIs(0)
                        ->groupPrioBucketIs(1)
                        ->groupInfoIs(7)
                        ->groupPerCopyInfoIs(0);
  auto const feature = cliShowTcamUsageFeatureInfoFactory("acl");
  CliShowTcamUsageEntryInfo entry(10, 5);
  entry.hitsIs(3);
  feature->entrySetIs(entry);
  copy->featurePrioBucketIs(5)->featureInfoEnq(feature);
  Halvo::String text;
  for (auto const [stage, info] : chip->stageInfo()) text += stringValue(stage);
  for (auto const [priority, bucket] : copy->featurePrioBucket()) {
    for (auto const& queued : bucket->featureInfo()) {
      text +=
          Zel::_fmt("%u %s %u\n", priority, queued->cliFeatureName(), queued->entrySet().size());
    }
  }
  feature->entrySetDel(feature->entrySet().begin());
  auto const summary = Halvo::makePtr<CliShowTcamSummaryOrdered>();
  summary->tcamSummaryIs("acl")->tcamSummaryGroupNameEnq("ipv4");

  Zel::RbTreeMap<Halvo::U16, Halvo::String, Tag> ordered;
  ordered.insert(7, "seven");
  for (auto const [key, value] : ordered) text += value;
  ordered.del(ordered.begin());
  Zel::RbTreeSet<Halvo::S16, Tag> set;
  set.insert(-1);
  Zel::HashMap2018<Halvo::U8, Halvo::U32> bytes;
  bytes.insert(7, 7);
  bytes.del(bytes.begin());
  Zel::HashMap2018<Halvo::U64, Halvo::String, std::hash<Halvo::U64>, Tag> words;
  words.insert(7, "seven");
  for (auto const [key, value] : words) text += value;
  Halvo::RQueue<Halvo::String, Tag> queue;
  queue.enq("first");
  text += queue.deq();

  Zel::Value result;
  if (Zel::attributeOp(*chip, 130, Zel::Op::count, {}, result) == Zel::OpResult::done) {
    text += result.text();
  }
  text += ZelHalvo::Impl::valueToStrep(entry);
  Zel::LogHandle linkDown(messages[0], Halvo::Duration(), 1.0, 0, 0);
  linkDown.log(Trelix::IpAddr().stringValue());
  return text;
}
