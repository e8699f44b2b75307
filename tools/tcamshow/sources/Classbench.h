// Filter sets of packet-classification research.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives one entry for each filter of `file`. From one filter to the next only their number is
/// kept.
///
/// A filter is one line:
///
///     @SRC/LEN DST/LEN LO : HI LO : HI PROTO/MASK [FLAGS/MASK]
///
/// Fields are separated by blanks or tabs, and each colon is a field. Numbers are decimal or, after
/// 0x, hexadecimal. Lines that are blank or begin with # are skipped.
std::unique_ptr<Source> openClassbench(InputFile file, Complaints& complaints);

/// Why a file that begins with `start` is no filter set. Empty if it is meant as one.
std::string_view classbenchRuledOut(std::string_view start) noexcept;

}  // namespace tcamshow
