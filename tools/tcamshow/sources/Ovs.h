// Flows of a software switch, as `ovs-ofctl dump-flows` prints them.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives one entry for each flow of `file`, and a group in front of the first flow of each table.
/// From one flow to the next only their number and the tables are kept.
///
/// A flow is one line, with or without its statistics, with names or numbers:
///
///     cookie=0x0, duration=1.2s, table=0, n_packets=3, n_bytes=162, priority=500,tcp,tp_dst=443
///     actions=output:2
///
/// (on one line). A part of the match that no qualifier can hold exactly goes into `otherMatch` as
/// it is printed. The heading of a reply is skipped. Any other line that is no flow is an error.
std::unique_ptr<Source> openOvs(InputFile file, Complaints& complaints);

/// Why a file that begins with `start` is no list of flows. Empty if it is meant as one.
std::string_view ovsRuledOut(std::string_view start) noexcept;

}  // namespace tcamshow
