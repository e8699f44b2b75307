// The usage tree and the summary: sequences of their public operations against a model of plain
// maps. Some removed subtrees are held and used further.
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

namespace {

using namespace VelmorTcam;
using Halvo::Ptr;
using Halvo::String;
using velmorfuzz::Input;

// --- the levels of the tree, behind one interface

template <class Node>
struct Level;

#define LEVEL(CLASS, CHILD, KEY, collection)                                           \
  template <>                                                                          \
  struct Level<CLASS> {                                                                \
    using Child = CHILD;                                                               \
    using Key = KEY;                                                                   \
    static Ptr<Child> make(CLASS& node, Key key) { return node.collection##Is(key); }  \
    static Ptr<Child> get(const CLASS& node, Key key) { return node.collection(key); } \
    static Ptr<Child> del(CLASS& node, Key key) { return node.collection##Del(key); }  \
    static void delAll(CLASS& node) { node.collection##DelAll(); }                     \
    static auto const& all(const CLASS& node) { return node.collection(); }            \
    template <class Iterator>                                                          \
    static Ptr<Child> delAt(CLASS& node, const Iterator& at) requires requires {       \
      node.collection##Del(at);                                                        \
    }                                                                                  \
    { return node.collection##Del(at); }                                               \
  }
LEVEL(CliShowTcamUsageChipInfo, CliShowTcamUsageStageInfo, StageType, stageInfo);
LEVEL(CliShowTcamUsageStageInfo, CliShowTcamUsagePipeInfo, Halvo::S16, pipeInfo);
LEVEL(CliShowTcamUsagePipeInfo, CliShowTcamUsageGroupPriorityBucket, Halvo::U32, groupPrioBucket);
LEVEL(CliShowTcamUsageGroupPriorityBucket, CliShowTcamUsageGroupInfo, Halvo::U32, groupInfo);
LEVEL(CliShowTcamUsageGroupInfo, CliShowTcamUsageGroupPerCopyInfo, Halvo::U32, groupPerCopyInfo);
LEVEL(CliShowTcamUsageGroupPerCopyInfo, CliShowTcamUsageFeaturePrioBucket, Halvo::U32,
      featurePrioBucket);
#undef LEVEL

StageType keyOf(const CliShowTcamUsageStageInfo& node) { return node.stage(); }
Halvo::S16 keyOf(const CliShowTcamUsagePipeInfo& node) { return node.pipeId(); }
Halvo::U32 keyOf(const CliShowTcamUsageGroupPriorityBucket& node) { return node.groupPriority(); }
Halvo::U32 keyOf(const CliShowTcamUsageGroupInfo& node) { return node.groupId(); }
Halvo::U32 keyOf(const CliShowTcamUsageGroupPerCopyInfo& node) { return node.copyId(); }
Halvo::U32 keyOf(const CliShowTcamUsageFeaturePrioBucket& node) { return node.featurePrio(); }

// --- the model

struct FeatureModel {
  using Identity = std::pair<std::uint32_t, std::uint32_t>;  // ~priority, id: in display order
  struct Entry {
    std::string description;
    std::uint64_t hits;
  };
  Ptr<CliShowTcamUsageFeatureInfo> node;
  std::map<Identity, Entry> entries;
  std::uint32_t generation = 1;
  std::uint32_t used = 0;
  std::uint32_t reserved = 0;
};

/// A node of any level, with its children by their key as a number.
struct NodeModel {
  std::map<std::int64_t, std::shared_ptr<NodeModel>> children;
  std::uint32_t generation = 1;
  std::uint32_t counts[3] = {};
  std::deque<FeatureModel*> features;  // null for a null pointer
};

class Run {
 public:
  explicit Run(Input& in) : in_(in) {}

  void run() {
    for (unsigned step = 0; !in_.empty() && step < 2000; ++step) {
      if (in_.below(8) == 0) {
        summaryStep();
      } else {
        visit(*chip_, *chipModel_);
      }
    }
    check(*chip_, *chipModel_);
    for (auto const& [node, model] : removedCopies_) check(*node, *model);
    for (auto const& [node, model] : removedPipes_) check(*node, *model);
    for (auto const& feature : features_) check(*feature);
    checkSummary();
    // Held nodes outlive the tree.
    chip_.reset();
    for (auto const& [node, model] : removedCopies_) check(*node, *model);
    for (auto const& feature : features_) {
      check(*feature);
      FUZZ_CHECK(feature->node->flag(Halvo::Node::flagBeingDestroyed) == false);
    }
  }

 private:
  template <class Key>
  Key key() {
    if constexpr (std::is_same_v<Key, StageType>) {
      return static_cast<StageType>(in_.flag() ? 1 + in_.below(3) : in_.u8());
    } else {
      return in_.oddNumber<Key>();
    }
  }

  /// Does one operation on this node or on one below it.
  template <class Node>
  void visit(Node& node, NodeModel& model) {
    using Access = Level<Node>;
    unsigned const what = in_.below(16);
    auto const key = this->key<typename Access::Key>();
    auto const number = static_cast<std::int64_t>(key);
    if (what < 10) {
      bool const isThere = model.children.count(number) != 0;
      FUZZ_CHECK((Access::get(node, key) != nullptr) == isThere);
      auto& childModel = model.children[number];
      if (!isThere) childModel = std::make_shared<NodeModel>();
      Ptr<typename Access::Child> const child = Access::make(node, key);
      FUZZ_CHECK(child && keyOf(*child) == key && Access::get(node, key) == child);
      // There are two references: this one and the collection's.
      FUZZ_CHECK(child->useCount() == 2);
      // Kept: the operation may remove a node above.
      std::shared_ptr<NodeModel> const kept = childModel;
      descend(*child, *kept);
    } else if (what < 12) {
      removed(Access::del(node, key), model, number);
    } else if (what == 12) {
      Access::delAll(node);
      model.children.clear();
      model.generation += 2;
    } else if (what == 13) {
      deleteAt(node, model, key);
    } else if (what == 14) {
      check(node, model);
    } else {
      walkAndDelete(node, model);
    }
  }
  void visit(CliShowTcamUsageFeaturePrioBucket& bucket, NodeModel& model) {
    bucketStep(bucket, model);
  }

  template <class Node>
  void descend(Node& node, NodeModel& model) {
    visit(node, model);
  }
  void descend(CliShowTcamUsageGroupPerCopyInfo& copy, NodeModel& model) {
    if (in_.below(4) != 0) return visit(copy, model);
    auto const count = in_.oddNumber<std::uint32_t>();
    unsigned const which = in_.below(3);
    model.counts[which] = count;
    if (which == 0) copy.usedEntriesIs(count);
    if (which == 1) copy.freeEntriesIs(count);
    if (which == 2) copy.availableEntriesIs(count);
  }

  template <class Child>
  void removed(const Ptr<Child>& child, NodeModel& model, std::int64_t number) {
    auto const found = model.children.find(number);
    FUZZ_CHECK((child != nullptr) == (found != model.children.end()));
    if (!child) return;
    FUZZ_CHECK(static_cast<std::int64_t>(keyOf(*child)) == number && child->useCount() == 1);
    FUZZ_CHECK(!child->flag(Halvo::Node::flagBeingDestroyed));
    keep(child, found->second);
    model.children.erase(found);
    model.generation += 2;
  }
  template <class Child>
  void keep(const Ptr<Child>& child, const std::shared_ptr<NodeModel>& model) {
    if constexpr (std::is_same_v<Child, CliShowTcamUsageGroupPerCopyInfo>) {
      removedCopies_.emplace_back(child, model);
    } else if constexpr (std::is_same_v<Child, CliShowTcamUsagePipeInfo>) {
      removedPipes_.emplace_back(child, model);
    } else {
      check(*child, *model);
    }
  }

  template <class Node, class Key>
  void deleteAt(Node& node, NodeModel& model, Key key) {
    if constexpr (requires { Level<Node>::all(node).at(key); }) {
      auto const at = Level<Node>::all(node).at(key);
      // Sometimes remove another child in between.
      if (in_.flag()) {
        auto const other = this->key<Key>();
        removed(Level<Node>::del(node, other), model, static_cast<std::int64_t>(other));
        if (other == key) {
          FUZZ_CHECK(!Level<Node>::delAt(node, at));
          return;
        }
      }
      removed(Level<Node>::delAt(node, at), model, static_cast<std::int64_t>(key));
    }
  }

  template <class Node>
  void walkAndDelete(Node& node, NodeModel& model) {
    unsigned const mask = in_.u8();
    unsigned step = 0;
    if constexpr (requires { Level<Node>::all(node).at(key<typename Level<Node>::Key>()); }) {
      auto expected = model.children.begin();
      auto const& all = Level<Node>::all(node);
      for (auto at = all.begin(); at != all.end(); ++at) {
        FUZZ_CHECK(expected != model.children.end());
        FUZZ_CHECK(static_cast<std::int64_t>(at.key()) == expected->first);
        auto const next = std::next(expected);
        if ((mask >> (step++ % 8) & 1) != 0) {
          removed(Level<Node>::delAt(node, at), model, expected->first);
        }
        expected = next;
      }
      FUZZ_CHECK(expected == model.children.end());
    }
  }

  // --- features and entries

  FeatureModel& feature() {
    std::size_t const at = in_.below(8);
    while (features_.size() <= at) {
      auto made = std::make_unique<FeatureModel>();
      made->node = cliShowTcamUsageFeatureInfoFactory("feature" + std::to_string(features_.size()));
      features_.push_back(std::move(made));
    }
    return *features_[at];
  }

  static Ptr<CliShowTcamUsageFeatureInfo> nodeOf(const FeatureModel* model) {
    return model == nullptr ? nullptr : model->node;
  }

  void bucketStep(CliShowTcamUsageFeaturePrioBucket& bucket, NodeModel& model) {
    auto& queue = model.features;
    switch (in_.below(10)) {
      case 0:
      case 1:
      case 2:
        queue.push_back(in_.u8() < 10 ? nullptr : &feature());
        bucket.featureInfoEnq(nodeOf(queue.back()));
        break;
      case 3: {
        auto const taken = bucket.featureInfoDeq();
        FUZZ_CHECK(taken == (queue.empty() ? nullptr : nodeOf(queue.front())));
        if (!queue.empty()) queue.pop_front();
        break;
      }
      case 4:
        if (in_.below(4) != 0) break;
        bucket.featureInfoDelAll();
        queue.clear();
        break;
      case 5:
        for (unsigned count = in_.u8(); count != 0; --count) {
          queue.push_back(&feature());
          bucket.featureInfoEnq(queue.back()->node);
        }
        break;
      default:
        featureStep(feature());
        break;
    }
    FUZZ_CHECK(bucket.featureInfoFront() == (queue.empty() ? nullptr : nodeOf(queue.front())));
    FUZZ_CHECK(bucket.featureInfoBack() == (queue.empty() ? nullptr : nodeOf(queue.back())));
  }

  void featureStep(FeatureModel& model) {
    CliShowTcamUsageFeatureInfo& feature = *model.node;
    CliShowTcamUsageEntryInfo entry(in_.oddNumber<std::uint32_t>(), in_.oddNumber<std::uint32_t>());
    FeatureModel::Identity const identity{~entry.entryPriority(), entry.entryId()};
    bool const isThere = model.entries.count(identity) != 0;
    FUZZ_CHECK(feature.entrySetHas(entry) == isThere);
    switch (in_.below(8)) {
      case 0:
      case 1:
      case 2: {
        std::string const description(in_.text(in_.below(80)));
        auto const hits = in_.oddNumber<std::uint64_t>();
        entry.descriptionIs(String(description));
        entry.hitsIs(hits);
        feature.entrySetIs(entry);
        model.entries.emplace(identity, FeatureModel::Entry{description, hits});
        FUZZ_CHECK(feature.entrySetHas(entry));
        break;
      }
      case 3:
        FUZZ_CHECK(feature.entrySetDel(entry) == isThere);
        model.entries.erase(identity);
        model.generation += isThere ? 2 : 0;
        break;
      case 4: {
        auto const at = feature.entrySet().at(entry);
        FUZZ_CHECK((at == feature.entrySet().end()) == !isThere);
        FUZZ_CHECK(feature.entrySetDel(at) == isThere);
        FUZZ_CHECK(!feature.entrySetDel(at));
        model.entries.erase(identity);
        model.generation += isThere ? 2 : 0;
        break;
      }
      case 5:
        if (in_.below(4) != 0) break;
        feature.entrySetDelAll();
        model.entries.clear();
        model.generation += 2;
        break;
      case 6:
        model.used = in_.oddNumber<std::uint32_t>();
        model.reserved = in_.oddNumber<std::uint32_t>();
        feature.usedEntriesIs(model.used);
        feature.reservedEntriesIs(model.reserved);
        break;
      default:
        check(model);
        break;
    }
  }

  static void check(const FeatureModel& model) {
    const CliShowTcamUsageFeatureInfo& feature = *model.node;
    FUZZ_CHECK(feature.usedEntries() == model.used && feature.reservedEntries() == model.reserved);
    auto const& set = feature.entrySet();
    FUZZ_CHECK(set.size() == model.entries.size() && set.generation() == model.generation);
    FUZZ_CHECK(set.removalGeneration() == model.generation);
    auto expected = model.entries.begin();
    for (const CliShowTcamUsageEntryInfo& entry : set) {
      FUZZ_CHECK(expected != model.entries.end());
      FUZZ_CHECK(~entry.entryPriority() == expected->first.first &&
                 entry.entryId() == expected->first.second);
      FUZZ_CHECK_TEXT(entry.description(), expected->second.description);
      FUZZ_CHECK(entry.hits() == expected->second.hits);
      FUZZ_CHECK(set.find(entry) == &entry);
      ++expected;
    }
    FUZZ_CHECK(expected == model.entries.end());
  }

  // --- the whole tree

  template <class Node>
  static void check(const Node& node, const NodeModel& model) {
    auto const& all = Level<Node>::all(node);
    FUZZ_CHECK(all.size() == model.children.size() && all.generation() == model.generation);
    if constexpr (std::is_same_v<Node, CliShowTcamUsageGroupPerCopyInfo>) {
      FUZZ_CHECK(node.usedEntries() == model.counts[0] && node.freeEntries() == model.counts[1] &&
                 node.availableEntries() == model.counts[2]);
    }
    constexpr bool isOrdered = !std::is_same_v<Node, CliShowTcamUsageChipInfo>;
    auto expected = model.children.begin();
    std::size_t met = 0;
    for (auto const [key, child] : all) {
      auto const number = static_cast<std::int64_t>(key);
      if constexpr (isOrdered) FUZZ_CHECK(expected->first == number);
      auto const found = model.children.find(number);
      FUZZ_CHECK(found != model.children.end() && keyOf(*child) == key);
      check(*child, *found->second);
      ++expected;
      ++met;
    }
    FUZZ_CHECK(met == model.children.size());
  }
  static void check(const CliShowTcamUsageFeaturePrioBucket& bucket, const NodeModel& model) {
    FUZZ_CHECK(bucket.featureInfo().size() == model.features.size());
    auto expected = model.features.begin();
    for (auto const& feature : bucket.featureInfo()) FUZZ_CHECK(feature == nodeOf(*expected++));
  }

  // --- the summary

  struct GroupModel {
    std::deque<std::string> names;
    bool isFinished = false;
  };

  String name() {
    // Some names are any bytes: the order goes by bytes.
    unsigned const shape = in_.u8();
    if (shape < 200) return "group" + std::to_string(shape % 20);
    return String(in_.text(shape - 190));
  }

  void summaryStep() {
    String const key = name();
    std::string const text = key.str();
    unsigned const what = in_.below(12);
    if (what == 0) {
      auto const gone = summary_->tcamSummaryDel(key);
      FUZZ_CHECK((gone != nullptr) == (groups_.count(text) != 0));
      if (gone) check(*gone, text);
      groupsGeneration_ += 2 * static_cast<std::uint32_t>(groups_.erase(text));
      return;
    }
    if (what == 1) {
      auto const at = summary_->tcamSummary().at(key);
      auto const gone = summary_->tcamSummaryDel(at);
      FUZZ_CHECK((gone != nullptr) == (groups_.count(text) != 0));
      if (gone) FUZZ_CHECK_TEXT(gone->groupName(), text);
      groupsGeneration_ += 2 * static_cast<std::uint32_t>(groups_.erase(text));
      return;
    }
    if (what == 2) {
      if (in_.below(4) == 0) {
        summary_->tcamSummaryDelAll();
        groups_.clear();
        groupsGeneration_ += 2;
      }
      return checkSummary();
    }
    FUZZ_CHECK((summary_->tcamSummary(key) != nullptr) == (groups_.count(text) != 0));
    auto const group = summary_->tcamSummaryIs(key);
    GroupModel& model = groups_[text];
    FUZZ_CHECK_TEXT(group->groupName(), text);
    String const entry = name();
    switch (in_.below(7)) {
      case 0:
      case 1:
      case 2:
        group->tcamSummaryGroupNameEnq(entry);
        model.names.push_back(entry.str());
        break;
      case 3:
        FUZZ_CHECK_TEXT(group->tcamSummaryGroupNameDeq(),
                        model.names.empty() ? "" : model.names.front());
        if (!model.names.empty()) model.names.pop_front();
        break;
      case 4:
        model.isFinished = in_.flag();
        group->pipeFinishedIs(model.isFinished);
        break;
      case 5:
        if (in_.below(4) != 0) break;
        group->tcamSummaryGroupNameDelAll();
        model.names.clear();
        break;
      default:
        break;
    }
    bool isRecorded = false;
    for (std::string const& each : model.names) isRecorded |= each == entry.view();
    FUZZ_CHECK(group->isGroupPipeDuplicate(entry) == (model.isFinished && isRecorded));
    check(*group, text);
  }

  void check(const CliShowTcamSummaryGroupName& group, const std::string& key) {
    const GroupModel& model = groups_[key];
    FUZZ_CHECK_TEXT(group.groupName(), key);
    FUZZ_CHECK(group.pipeFinished() == model.isFinished);
    FUZZ_CHECK(group.tcamSummaryGroupName().size() == model.names.size());
    FUZZ_CHECK_TEXT(group.tcamSummaryGroupNameFront(),
                    model.names.empty() ? "" : model.names.front());
    FUZZ_CHECK_TEXT(group.tcamSummaryGroupNameBack(),
                    model.names.empty() ? "" : model.names.back());
    auto expected = model.names.begin();
    for (String const& each : group.tcamSummaryGroupName()) FUZZ_CHECK_TEXT(each, *expected++);
  }

  void checkSummary() {
    auto const& all = summary_->tcamSummary();
    FUZZ_CHECK(all.size() == groups_.size() && all.generation() == groupsGeneration_);
    auto expected = groups_.begin();
    for (auto const [key, group] : all) {
      FUZZ_CHECK_TEXT(key, expected->first);
      check(*group, expected->first);
      ++expected;
    }
    FUZZ_CHECK(expected == groups_.end());
  }

  Input& in_;
  Ptr<CliShowTcamUsageChipInfo> chip_ = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  std::shared_ptr<NodeModel> chipModel_ = std::make_shared<NodeModel>();
  std::vector<std::pair<Ptr<CliShowTcamUsageGroupPerCopyInfo>, std::shared_ptr<NodeModel>>>
      removedCopies_;
  std::vector<std::pair<Ptr<CliShowTcamUsagePipeInfo>, std::shared_ptr<NodeModel>>> removedPipes_;
  std::vector<std::unique_ptr<FeatureModel>> features_;
  Ptr<CliShowTcamSummaryOrdered> summary_ = Halvo::makePtr<CliShowTcamSummaryOrdered>();
  std::map<std::string, GroupModel> groups_;
  std::uint32_t groupsGeneration_ = 1;
};

}  // namespace

FUZZ_TARGET(usage) { Run(in).run(); }
