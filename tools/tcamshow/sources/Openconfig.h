// ACL documents of OpenConfig's form.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives the ACLs of `file` in the document's order: a group for each ACL, and an entry for each of
/// its entries. The entries' feature is the ACL's name. The whole document is read and checked at
/// once: if it has a fault, nothing is given.
///
/// The document is JSON: `acl` holds `acl-sets`, which holds `acl-set`, which has a member for each
/// ACL; its `acl-entries` holds `acl-entry`, which has a member for each entry. A number may be a
/// string, in decimal or, after 0x, in hexadecimal. Protocols, ether types and TCP flags may be
/// names. A member of `acl-set` that is not an object is left out with a warning.
///
/// An entry goes to the first of these tables that applies:
///
/// - it matches everything, and the ACL's type names a family: that family's table
/// - it matches nothing above layer 2: the MAC table
/// - its addresses, its ether type or ICMPv6 show the family: that family's table
/// - other entries of the ACL show one family: that family's table
/// - the ACL's type names the family: that family's table
/// - otherwise the IPv4 table
///
/// Gives a warning if no qualifier can hold a part of the match. Memory: at most eight times the
/// document.
std::unique_ptr<Source> openOpenconfig(InputFile file, Complaints& complaints);

/// Why a file that begins with `start` is no ACL document. Empty if it is meant as one.
std::string_view openconfigRuledOut(std::string_view start) noexcept;

}  // namespace tcamshow
