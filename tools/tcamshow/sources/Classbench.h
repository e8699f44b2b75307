// Filter sets of packet-classification research.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives the filters of `file`, one entry a filter. Nothing is kept from one filter to the next but
/// their number.
///
/// A filter is one line:
///
///     @SRC/LEN DST/LEN LO : HI LO : HI PROTO/MASK [FLAGS/MASK]
///
/// Blanks or tabs stand between the fields, each colon is a field of its own, and numbers are
/// decimal or, with 0x before them, hexadecimal. Lines that are blank or begin with # are skipped.
std::unique_ptr<Source> openClassbench(InputFile file, Complaints& complaints);

/// Whether a file that begins so is a filter set.
bool resemblesClassbench(std::string_view start) noexcept;

}  // namespace tcamshow
