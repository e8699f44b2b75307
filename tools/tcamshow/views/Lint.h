// The findings of `lint`.
#pragma once

#include "io/OutputBuffer.h"
#include "questions/Lint.h"
#include "snapshot/EntryStore.h"
#include "views/JsonPrinter.h"

namespace tcamshow {

/// Shows findings as they are made, place by place, as text or as JSON Lines.
///
///     LintView view(out, isJson);
///     for (const PlaceInfo& place : store.places()) view.show(store, place, lintOf(...), shown);
class LintView {
 public:
  /// `out` must outlive the view.
  LintView(OutputBuffer& out, bool isJson);

  /// Shows the findings of the classes `shown`, one line each.
  void show(const EntryStore& store, const PlaceInfo& place, const PlaceFindings& findings,
            LintClasses shown);

 private:
  void showText(const EntryStore& store, const PlaceInfo& place, const LintFinding& finding,
                FieldMask named);
  void showJson(const EntryStore& store, const PlaceInfo& place, const LintFinding& finding,
                FieldMask named);

  OutputBuffer& out_;
  bool isJson_;
  JsonPrinter printer_;
  std::string line_;
  Entry scratch_;
};

}  // namespace tcamshow
