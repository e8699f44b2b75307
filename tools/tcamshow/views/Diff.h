// The differences of `diff`.
#pragma once

#include <string>
#include <string_view>

#include "io/OutputBuffer.h"
#include "questions/Diff.h"
#include "views/JsonPrinter.h"

namespace tcamshow {

/// Shows differences as they are found, then their numbers, as text or as JSON Lines.
class DiffView {
 public:
  /// `out` must outlive the view.
  DiffView(OutputBuffer& out, PlaceBy placeBy, bool isJson);

  /// The place of the differences that come next.
  void placeIs(const CommonPlace& place);
  void show(const Difference& difference);
  void showCounts(const DiffCounts& counts);

 private:
  void showText(const Difference& difference);
  void showJson(const Difference& difference);

  OutputBuffer& out_;
  PlaceBy placeBy_;
  bool isJson_;
  JsonPrinter printer_;
  const CommonPlace* place_ = nullptr;
  bool isPlaceShown_ = false;
  std::string text_;
};

}  // namespace tcamshow
