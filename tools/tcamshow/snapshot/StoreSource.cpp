#include "snapshot/StoreSource.h"

#include <cstddef>
#include <numeric>
#include <string>
#include <utility>

namespace tcamshow {
namespace {

class StoreSource final : public Source {
 public:
  StoreSource(const EntryStore& store, std::vector<std::uint32_t> numbers, Complaints& complaints)
      : Source(complaints), store_(store), numbers_(std::move(numbers)) {
    header_ = store.header();
  }

  const std::string& fileName() const noexcept override { return store_.fileName(); }
  // The store does not know where its items stood.
  std::uint64_t lineNumber() const noexcept override { return 0; }

  Item next() override {
    while (place_ < store_.places().size()) {
      const PlaceInfo& info = store_.places()[place_++];
      if (!info.hasGroup) continue;
      group_ = {info.place, info.name, info.availableEntries, info.freeEntries, info.totalEntries};
      return Item::group;
    }
    if (at_ == numbers_.size()) return Item::end;
    store_.entry(numbers_[at_++], entry_);
    return Item::entry;
  }

 private:
  const EntryStore& store_;
  std::vector<std::uint32_t> numbers_;
  std::size_t place_ = 0;
  std::size_t at_ = 0;
};

}  // namespace

std::unique_ptr<Source> storeSource(const EntryStore& store, std::vector<std::uint32_t> numbers,
                                    Complaints& complaints) {
  return std::make_unique<StoreSource>(store, std::move(numbers), complaints);
}

std::unique_ptr<Source> storeSource(const EntryStore& store, Complaints& complaints) {
  std::vector<std::uint32_t> numbers(store.size());
  std::iota(numbers.begin(), numbers.end(), 0U);
  return storeSource(store, std::move(numbers), complaints);
}

}  // namespace tcamshow
