#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"

#include <iostream>  // constructs the streams before the table
#include <map>
#include <utility>

#include "VelmorTcamManagerBase/VelmorTcamCliTypesAssertions.h"

namespace VelmorTcam {

namespace {

// The blanks are part of the layout: scripts know the columns.
constexpr const char* ipHeader =
    "Id        | Seq   | Proto | Src IP        | Src Mask      | Src Port  | VlanId | VlanMask "
    "|Hits\n"
    "TOS/Mask  | Frag  | Flags | Dest IP       | Dest Mask     | Dest Port | IP Length |Action\n";
constexpr const char* ip6Header =
    "Id   | Seq     | Proto | Src IP                                | Src Prefix  | Src Port  "
    "| VlanId | VlanMask |Hits\n"
    "     | Flags   |       | Dest IP                               | Dest Prefix | Dest Port "
    "|Action\n"
    "     | TC/Mask |       |                                       |  IP Length  | Hop Limit |\n";
constexpr const char* macHeader =
    "Id   | Seq | Src Mac         | Src Mask        | Dest Mac        | Dest Mask       "
    "|EType|VlanId|VlanMask|Action|Hits\n";

std::map<CliHeaderType, Halvo::String> cliHeaderMap;

}  // namespace

void initializeCliHeaders() {
  if (!cliHeaderMap.empty()) return;
  // Filled all at once: a table that holds anything is not filled again.
  std::map<CliHeaderType, Halvo::String> headers;
  headers.emplace(cliHeaderTypeIp, ipHeader);
  headers.emplace(cliHeaderTypeIp6, ip6Header);
  headers.emplace(cliHeaderTypeMac, macHeader);
  cliHeaderMap = std::move(headers);
}

Halvo::String getCliHeader(CliHeaderType cliHeaderType) {
  auto const header = cliHeaderMap.find(cliHeaderType);
  Zel::assertThat(header != cliHeaderMap.end(), assertions::getCliHeader);
  return header->second;
}

}  // namespace VelmorTcam
