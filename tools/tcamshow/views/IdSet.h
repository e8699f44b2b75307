// The ids that have been met.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "io/KeyedHash.h"
#include "io/KeyedTable.h"

namespace tcamshow {

/// A set of ids to which ids are only added. It takes a few bits for an id where many are near each
/// other, as they mostly are, and some 20 bytes for one that is far from all others.
class IdSet {
 public:
  /// False when the id is there already.
  bool insert(std::uint64_t id) {
    if (isEmpty_) {
      isEmpty_ = false;
      first_ = id;
      return true;
    }
    if (id == first_) return false;
    if (rest_ == nullptr) rest_ = std::make_unique<Rest>();
    return rest_->insert(id);
  }

 private:
  /// Ids are near each other when they stand in one block.
  static constexpr std::size_t blockSize = 256;
  static constexpr std::uint64_t blockOf(std::uint64_t id) noexcept { return id / blockSize; }

  /// An id that has next to no others near it. It is looked for by its block.
  struct Single {
    static constexpr std::uint64_t none = ~std::uint64_t{0};
    std::uint64_t id = none;

    bool isEmpty() const noexcept { return id == none; }
    std::uint64_t hash() const noexcept { return keyedHash(blockOf(id), 0); }
    bool hasKeyOf(const Single& other) const noexcept { return id == other.id; }
  };
  struct Block {
    static constexpr std::uint64_t none = ~std::uint64_t{0};
    std::uint64_t block = none;
    std::bitset<blockSize> ids;

    bool isEmpty() const noexcept { return block == none; }
    std::uint64_t hash() const noexcept { return keyedHash(block, 0); }
    bool hasKeyOf(const Block& other) const noexcept { return block == other.block; }
    /// False when the id is there already.
    bool insert(std::uint64_t id) {
      bool const isNew = !ids[id % blockSize];
      ids.set(id % blockSize);
      return isNew;
    }
  };

  /// All ids but the first: most places of a large snapshot may have one alone.
  class Rest {
   public:
    bool insert(std::uint64_t id) {
      // No place in `singles` can hold this id.
      if (id == Single::none) return !std::exchange(hasNone_, true);
      std::uint64_t const block = blockOf(id);
      if (last_ == nullptr || last_->block != block) last_ = blocks_.find({block, {}});
      if (last_ != nullptr) return last_->insert(id);
      Block near{block, {}};
      singles_.eachOnPath({id}, [&](const Single& single) {
        if (blockOf(single.id) == block) near.insert(single.id);
      });
      if (!near.insert(id)) return false;
      constexpr std::size_t mostSingles = 4;  // five take more than a block
      if (near.ids.count() <= mostSingles) {
        singles_.insert({id});
      } else {
        last_ = blocks_.insert(near).first;
      }
      return true;
    }

   private:
    KeyedTable<Single> singles_;
    KeyedTable<Block> blocks_;
    Block* last_ = nullptr;  // the block of the id before; null where that had none
    bool hasNone_ = false;
  };

  bool isEmpty_ = true;
  std::uint64_t first_ = 0;
  std::unique_ptr<Rest> rest_;
};

}  // namespace tcamshow
