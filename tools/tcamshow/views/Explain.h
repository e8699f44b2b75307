// The answers of `explain`.
#pragma once

#include <string_view>
#include <vector>

#include "io/OutputBuffer.h"
#include "questions/Explain.h"
#include "views/JsonPrinter.h"

namespace tcamshow {

/// Shows the answers place by place, as text or as JSON Lines.
class ExplainView {
 public:
  /// `out` must outlive the view.
  ExplainView(OutputBuffer& out, bool isJson);

  /// `named`: the fields of which a packet tells the value.
  void show(const EntryStore& store, const PlaceInfo& place, const std::vector<Answer>& answers,
            FieldMask named);
  /// No place has an entry that meets the packets.
  void showNothing(std::string_view packets);

 private:
  void showText(const EntryStore& store, const PlaceInfo& place, const Answer& answer,
                FieldMask named);
  void showJson(const EntryStore& store, const PlaceInfo& place, const Answer& answer,
                FieldMask named);

  OutputBuffer& out_;
  bool isJson_;
  JsonPrinter printer_;
  std::string text_;
  Entry scratch_;
};

}  // namespace tcamshow
