#include "match/OverlapIndex.h"

#include <algorithm>
#include <bit>

namespace tcamshow {

template <class W>
OverlapIndex<W>::OverlapIndex(const BoxSpace<W>& space) : space_(space), boxes_(space.fields()) {
  constexpr unsigned wordBits = 32;
  unsigned free = 0;  // in the last column
  for (std::size_t i = 0; i < space.fields(); ++i) {
    // The highest bits first: addresses part by them.
    for (unsigned left = bitsOf(space.field(i)); left != 0;) {
      if (free == 0) {
        columns_.emplace_back();
        free = wordBits;
      }
      unsigned const bits = std::min(left, free);
      left -= bits;
      free -= bits;
      columns_.back().parts.push_back(
          {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(left),
           static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(free)});
    }
  }
}

template <class W>
TernaryWord OverlapIndex<W>::wordOf(const Column& column, Box<W> box) noexcept {
  TernaryWord word{0, 0};
  for (const Part& part : column.parts) {
    const FieldSetOf<W>& set = box[part.field];
    auto const cut = [&part](W bits) {
      return static_cast<std::uint32_t>(bits >> part.fieldShift & lowOnes<W>(part.bits))
             << part.wordShift;
    };
    word.value |= cut(set.value());
    word.mask |= cut(set.mask());
  }
  return word;
}

/// The fields, one bit each in the space's order, of which the words leave something out.
template <class W>
std::uint32_t OverlapIndex<W>::rangesOf(Box<W> box) const noexcept {
  std::uint32_t ranges = 0;
  for (std::size_t i = 0; i < space_.fields(); ++i) {
    if (!box[i].isCube()) ranges |= 1U << i;
  }
  return ranges;
}

template <class W>
void OverlapIndex<W>::add(Box<W> box) {
  std::size_t const number = boxes_.size();
  boxes_.push(box);
  ranges_.push_back(rangesOf(box));
  for (Column& column : columns_) {
    TernaryWord const word = wordOf(column, box);
    // Whole blocks: a scan reads no further than there is memory.
    if (number % blockSize == 0) {
      column.values.resize(number + blockSize);
      column.masks.resize(number + blockSize);
      column.hulls.push_back(word);
    }
    column.values[number] = word.value;
    column.masks[number] = word.mask;
    TernaryWord& hull = column.hulls.back();
    hull.mask &= word.mask & ~(hull.value ^ word.value);
    hull.value &= hull.mask;
  }
}

/// Which boxes of a block may meet the words: bit i for the block's i-th.
template <class W>
std::uint64_t OverlapIndex<W>::blockHits(const std::vector<TernaryWord>& words,
                                         std::size_t block) const noexcept {
  for (std::size_t c = 0; c < words.size(); ++c) {
    TernaryWord const hull = columns_[c].hulls[block];
    if (((hull.value ^ words[c].value) & hull.mask & words[c].mask) != 0) return 0;
  }
  std::array<std::uint32_t, blockSize> differ{};
  for (std::size_t c = 0; c < words.size(); ++c) {
    const std::uint32_t* const values = columns_[c].values.data() + block * blockSize;
    const std::uint32_t* const masks = columns_[c].masks.data() + block * blockSize;
    auto const [value, mask] = words[c];
    if (mask == 0) continue;
    std::uint32_t isSome = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
      differ[i] |= (values[i] ^ value) & masks[i] & mask;
      isSome |= static_cast<std::uint32_t>(differ[i] == 0);
    }
    if (isSome == 0) return 0;
  }
  std::uint64_t hits = 0;
  for (std::size_t i = 0; i < blockSize; ++i) hits |= std::uint64_t{differ[i] == 0 ? 1U : 0U} << i;
  return hits;
}

template <class W>
void OverlapIndex<W>::overlapping(Box<W> box, std::uint32_t from, std::uint32_t to,
                                  std::vector<std::uint32_t>& found) const {
  std::vector<TernaryWord> words;
  words.reserve(columns_.size());
  for (const Column& column : columns_) words.push_back(wordOf(column, box));
  std::uint32_t const ranges = rangesOf(box);
  // Where two boxes do not differ in their words, only ranges can part them.
  auto const meets = [&](std::uint32_t number) {
    for (std::uint32_t left = ranges | ranges_[number]; left != 0; left &= left - 1) {
      auto const i = static_cast<std::size_t>(std::countr_zero(left));
      if (!boxes_[number][i].overlaps(box[i])) return false;
    }
    return true;
  };
  for (std::uint32_t block = from / blockSize; block * blockSize < to; ++block) {
    for (std::uint64_t hits = blockHits(words, block); hits != 0; hits &= hits - 1) {
      std::uint32_t const number =
          block * blockSize + static_cast<std::uint32_t>(std::countr_zero(hits));
      if (number < from) continue;
      if (number >= to) return;
      if (meets(number)) found.push_back(number);
    }
  }
}

template class OverlapIndex<Word>;
template class OverlapIndex<std::uint64_t>;

}  // namespace tcamshow
