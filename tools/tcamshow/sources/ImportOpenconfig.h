// ACL documents of OpenConfig's form, as snapshots.
#pragma once

#include <string>
#include <vector>

#include "io/LineReader.h"
#include "io/OutputBuffer.h"

namespace tcamshow {

/// Writes the ACLs of `file` as a snapshot: a group for each ACL, with a feature of the ACL's name,
/// and an entry for each of its entries, in the document's order.
///
/// The document is JSON: `acl` holds `acl-sets`, which holds `acl-set`, which has a member for each
/// ACL; its `acl-entries` holds `acl-entry`, which has a member for each entry. Numbers may stand
/// in strings, decimal or with 0x before them; protocols, ether types and TCP flags may be names.
///
/// An entry goes to the table of its family, which its addresses, its ether type or ICMPv6 show,
/// else the other entries of its ACL, else the type of the ACL, else it is IPv4; one that matches
/// nothing above layer 2 goes to the MAC table.
///
/// Adds to `warnings` what no qualifier carries. A document with a fault writes nothing: throws
/// InputError, which names the ACL, the entry and the member. Throws what OutputBuffer throws.
void importOpenconfig(InputFile& file, OutputBuffer& out, std::vector<std::string>& warnings);

}  // namespace tcamshow
