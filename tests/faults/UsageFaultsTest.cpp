// The usage tree, the summary and reflection, each with every allocation failing in turn.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "EveryFault.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Types/Reflect.h"

namespace VelmorTcam {
namespace {

using Halvo::makePtr;
using Halvo::Ptr;
using Halvo::String;
using Zel::Op;
using Zel::Value;

/// The text of a walk over the whole tree.
std::string walked(const CliShowTcamUsageChipInfo& chip) {
  std::string text;
  auto const number = [&text](char level, auto key) {
    text += level;
    text += std::to_string(key);
  };
  auto const features = [&](const CliShowTcamUsageFeaturePrioBucket& bucket) {
    for (auto const& feature : bucket.featureInfo()) {
      text += feature->cliFeatureName().view();
      for (auto const& entry : feature->entrySet()) {
        number('e', entry.entryPriority());
        number('/', entry.entryId());
        text += entry.description().view();
      }
    }
  };
  auto const groups = [&](const CliShowTcamUsagePipeInfo& pipe) {
    for (auto const& [priority, bucket] : pipe.groupPrioBucket()) {
      number('b', priority);
      for (auto const& [id, group] : bucket->groupInfo()) {
        number('g', id);
        for (auto const& [copyId, copy] : group->groupPerCopyInfo()) {
          number('c', copyId);
          for (auto const& [featurePrio, prioBucket] : copy->featurePrioBucket()) {
            number('f', featurePrio);
            features(*prioBucket);
          }
        }
      }
    }
  };
  for (unsigned s = 0; s < 4; ++s) {
    auto const stage = chip.stageInfo(static_cast<StageType>(s));
    if (!stage) continue;
    number('s', s);
    for (auto const& [pipeId, pipe] : stage->pipeInfo()) {
      number('p', pipeId);
      groups(*pipe);
    }
  }
  return text;
}

/// Does `step`. If memory fails, checks that `state()` has not changed, and does the step again.
template <class State, class Step>
void stepOf(Fault& fault, const State& state, Step step) {
  auto const before = state();
  if (fault.tries(step)) return;
  fault.check(state() == before, "a step that fails changes nothing");
  step();
}

TEST(Faults, UsageTree) {
  std::string expected;
  everyFault("usage tree",
             [&](Fault& fault) {
               auto chip = makePtr<CliShowTcamUsageChipInfo>();
               auto const state = [&] { return walked(*chip); };
               for (U32 n = 0; n < 12; ++n) {
                 Ptr<CliShowTcamUsageStageInfo> stage;
                 stepOf(fault, state, [&] { stage = chip->stageInfoIs(StageType(1 + n % 3)); });
                 Ptr<CliShowTcamUsagePipeInfo> pipe;
                 stepOf(fault, state, [&] { pipe = stage->pipeInfoIs(static_cast<S16>(n % 2)); });
                 Ptr<CliShowTcamUsageGroupPriorityBucket> bucket;
                 stepOf(fault, state, [&] { bucket = pipe->groupPrioBucketIs(n); });
                 Ptr<CliShowTcamUsageGroupInfo> group;
                 stepOf(fault, state, [&] { group = bucket->groupInfoIs(7); });
                 Ptr<CliShowTcamUsageGroupPerCopyInfo> copy;
                 stepOf(fault, state, [&] { copy = group->groupPerCopyInfoIs(0); });
                 Ptr<CliShowTcamUsageFeaturePrioBucket> features;
                 stepOf(fault, state, [&] { features = copy->featurePrioBucketIs(1); });
                 for (U32 f = 0; f < (n == 0 ? 6 : 1); ++f) {
                   Ptr<CliShowTcamUsageFeatureInfo> feature;
                   stepOf(fault, state,
                          [&] { feature = cliShowTcamUsageFeatureInfoFactory(String(80, 'f')); });
                   for (U32 e = 0; e < 3; ++e) {
                     CliShowTcamUsageEntryInfo entry(e, n);
                     entry.descriptionIs(String(80, static_cast<char>('a' + e)));
                     stepOf(
                         fault, [&] { return feature->entrySet().size(); },
                         [&] { feature->entrySetIs(entry); });
                   }
                   // A queue that cannot allocate a block stops the process.
                   auto const queued = features->featureInfo().size();
                   if (!fault.triesOrAborts([&] { features->featureInfoEnq(feature); })) {
                     fault.check(false, "to queue a reference throws nothing");
                   }
                   fault.check(features->featureInfo().size() == queued + 1, "it is in the queue");
                 }
               }
               std::string const whole = walked(*chip);
               if (expected.empty()) expected = whole;
               fault.check(whole == expected, "the tree is whole");
               // Only the text of the walk needs memory.
               std::string met;
               met.reserve(whole.size() + 64);
               if (!fault.tries([&] { met = walked(*chip); })) met = walked(*chip);
               fault.check(met == expected, "the walk meets all");
               auto const at = chip->stageInfo(StageType(1))->pipeInfo().begin();
               fault.withoutMemory([&] {
                 chip->stageInfo(StageType(1))->pipeInfoDel(at);
                 chip.reset();
               });
             },
             {.inChild = true});
}

TEST(Faults, Summary) {
  auto const name = [](int n) { return String(80, static_cast<char>('a' + n)); };
  everyFault("summary",
             [&](Fault& fault) {
               auto summary = makePtr<CliShowTcamSummaryOrdered>();
               for (int n = 0; n < 12; ++n) {
                 Ptr<CliShowTcamSummaryGroupName> group;
                 stepOf(
                     fault, [&] { return summary->tcamSummary().size(); },
                     [&] { group = summary->tcamSummaryIs(name(n % 4)); });
                 for (int f = 0; f < 4; ++f) {
                   auto const queued = group->tcamSummaryGroupName().size();
                   auto const enqueue = [&] { group->tcamSummaryGroupNameEnq(name(f)); };
                   // Copying the name may throw. Allocating the block may abort.
                   if (!fault.triesOrAborts(enqueue)) {
                     fault.check(group->tcamSummaryGroupName().size() == queued,
                                 "nothing is queued");
                     enqueue();
                   }
                   fault.check(group->tcamSummaryGroupNameBack() == name(f), "it is in the queue");
                 }
                 group->pipeFinishedIs(true);
               }
               auto const walk = [&] {
                 std::size_t met = 0;
                 for (auto const& [groupName, group] : summary->tcamSummary()) {
                   for (const String& feature : group->tcamSummaryGroupName()) {
                     met += groupName.size() + feature.size();
                   }
                   met += group->tcamSummaryGroupNameFront().size();
                 }
                 return met;
               };
               std::size_t met = 0;
               if (!fault.tries([&] { met = walk(); })) met = walk();
               fault.check(met == 12 * 4 * 160 + 4 * 80, "the walk meets all");
               auto const group = summary->tcamSummary(name(0));
               String front;
               if (!fault.tries([&] { front = group->tcamSummaryGroupNameFront(); })) {
                 fault.check(front.empty(), "nothing is given");
               }
               String const known = name(1);
               fault.withoutMemory([&] {
                 front = group->tcamSummaryGroupNameDeq();
                 fault.check(group->isGroupPipeDuplicate(known), "the name is known");
                 summary.reset();
               });
               fault.check(front == name(0), "the first comes first");
             },
             {.inChild = true});
}

/// Returns the operation's result and passes on its exceptions.
Value done(Halvo::Node& node, U32 number, Op op, std::vector<Value> const& arguments = {}) {
  Value result;
  if (Zel::attributeOp(node, number, op, arguments, result) != Zel::OpResult::done) {
    throw Fault::CheckFailed("the operation is supported");
  }
  return result;
}

std::vector<Value> childrenOf(Halvo::Node& node, U32 number) {
  std::vector<Value> children;
  auto const cursor = done(node, number, Op::iterate).as<Ptr<Zel::Cursor>>();
  Value key;
  Value element;
  while (cursor->next(key, element)) children.push_back(element);
  return children;
}

TEST(Faults, Reflection) {
  everyFault(
      "reflection",
      [](Fault& fault) {
        // Includes the allocations for the arguments and results of each step.
        auto const step = [&fault](const auto& state, auto action) {
          stepOf(fault, state, std::move(action));
        };
        auto const& chipType = *Zel::findType("VelmorTcam::CliShowTcamUsageChipInfo");
        auto const& featureType = *Zel::findType("VelmorTcam::CliShowTcamUsageFeatureInfo");
        auto const& entryType = *Zel::findType("VelmorTcam::CliShowTcamUsageEntryInfo");
        auto const nothing = [] { return 0; };
        Ptr<Halvo::Node> chip;
        step(nothing, [&] { chip = Zel::createNode(chipType, {}); });
        auto const count = [](Ptr<Halvo::Node>& node, U32 number) {
          return [&node, number] { return done(*node, number, Op::count).as<U32>(); };
        };
        Ptr<Halvo::Node> node = chip;
        struct Level {
          U32 children;
          Value key;
        };
        for (const Level& level :
             {Level{130, stageTypeIngress}, Level{131, S16{2}}, Level{131, U32{3}},
              Level{131, U32{4}}, Level{131, U32{5}}, Level{134, U32{6}}}) {
          Ptr<Halvo::Node> child;
          step(count(node, level.children), [&] {
            child =
                done(*node, level.children, Op::createOrGet, {level.key}).as<Ptr<Halvo::Node>>();
          });
          fault.check(child->useCount() == 2, "the child has its parent's reference and ours");
          node = child;
        }
        Ptr<Halvo::Node> feature;
        step(nothing, [&] {
          Value const name(String(80, 'n'));
          feature = Zel::createNode(featureType, {&name, 1});
        });
        step([&] { return done(*feature, 131, Op::read).as<U32>(); },
             [&] { done(*feature, 131, Op::write, {Value(U32{9})}); });
        for (U32 id = 0; id < 3; ++id) {
          Value entry;
          step(nothing, [&] {
            Value const arguments[] = {Value(U32{1}), Value(id)};
            entry = Value::make(entryType, arguments);
          });
          step(
              [&] { return entry.text(); },
              [&] {
                Value result;
                Value const description(String(80, 'd'));
                static_cast<void>(Zel::attributeOp(entry, 4, Op::write, {&description, 1}, result));
              });
          step(count(feature, 133), [&] { done(*feature, 133, Op::insert, {entry, Value(true)}); });
          String text;
          step(nothing, [&] { text = entry.text(); });
          Value read;
          step(nothing, [&] { read = Value::fromText(entryType, text); });
          fault.check(read == entry && read.text() == text, "the record reads back");
        }
        fault.check(count(feature, 133)() == 3, "the entries are in the set");
        auto const queued = count(node, 132);
        auto const enqueue = [&] { done(*node, 132, Op::enqueue, {Value(feature)}); };
        if (!fault.triesOrAborts(enqueue)) {
          fault.check(queued() == 0, "nothing is queued");
          enqueue();
        }
        fault.check(queued() == 1, "it is in the queue");
        std::string printed;
        auto const print = [&] {
          printed.clear();
          for (const Value& element : childrenOf(*feature, 133)) printed += element.text().view();
          for (const Value& element : childrenOf(*node, 132)) printed += element.text().view();
          printed += done(*feature, 130, Op::read).text().view();
        };
        if (!fault.tries(print)) print();
        fault.check(printed.size() > 3 * 80 + 80, "all is printed");
        node = feature = nullptr;
        fault.withoutMemory([&] { chip.reset(); });
      },
      {.inChild = true});
}

}  // namespace
}  // namespace VelmorTcam
