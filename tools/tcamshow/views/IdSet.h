// A compact set of ids.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "io/KeyedHash.h"
#include "io/KeyedTable.h"

namespace tcamshow {

/// A set of ids that only grows. An id takes a few bits if many others are near, as is usual, and
/// about 20 bytes if it is far from all others.
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
  /// Two ids are near each other if they are in one block.
  static constexpr std::size_t blockSize = 256;
  static constexpr std::uint64_t blockOf(std::uint64_t id) noexcept { return id / blockSize; }

  /// An id with few others near it. Its hash is the hash of its block.
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

  /// All ids except the first: in a large snapshot, most places may have only one.
  class Rest {
   public:
    bool insert(std::uint64_t id) {
      // In `singles_` this id would mean an empty slot.
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
    Block* last_ = nullptr;  // the block of the previous id; null if it had none
    bool hasNone_ = false;
  };

  bool isEmpty_ = true;
  std::uint64_t first_ = 0;
  std::unique_ptr<Rest> rest_;
};

}  // namespace tcamshow
