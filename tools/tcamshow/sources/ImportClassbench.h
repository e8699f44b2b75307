// Filter sets of packet-classification research, as snapshots.
#pragma once

#include "io/LineReader.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

/// Writes the filters of `file` as a snapshot, one entry a filter. Nothing is kept from one filter
/// to the next but their number.
///
/// A filter is one line:
///
///     @SRC/LEN DST/LEN LO : HI LO : HI PROTO/MASK [FLAGS/MASK]
///
/// Blanks or tabs stand between the fields, each colon is a field of its own, and numbers are
/// decimal or, with 0x before them, hexadecimal. Lines that are blank or begin with # are skipped.
///
/// Throws InputError for the first bad filter, when those before it may be written, and what
/// OutputBuffer throws.
void importClassbench(InputFile& file, OutputBuffer& out);

}  // namespace tcamshow
