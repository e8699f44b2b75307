// ACL documents of OpenConfig's form.
#pragma once

#include <memory>
#include <string_view>

#include "io/InputFile.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Gives the ACLs of `file`: a group for each ACL, with a feature of the ACL's name, and an entry
/// for each of its entries, in the document's order. The document is read and checked as a whole at
/// once: nothing is given of one with a fault.
///
/// The document is JSON: `acl` holds `acl-sets`, which holds `acl-set`, which has a member for each
/// ACL; its `acl-entries` holds `acl-entry`, which has a member for each entry. Numbers may stand
/// in strings, decimal or with 0x before them; protocols, ether types and TCP flags may be names. A
/// member of `acl-set` that is no object is no ACL, and is left out with a warning.
///
/// An entry goes to the table of its family, which its addresses, its ether type or ICMPv6 show,
/// else the other entries of its ACL, else the type of the ACL, else it is IPv4. One that matches
/// nothing above layer 2 goes to the MAC table; but one that matches everything, in an ACL whose
/// type names a family, to that family's table.
///
/// Warns of what no qualifier carries. Memory: at most eight times the document.
std::unique_ptr<Source> openOpenconfig(InputFile file, Complaints& complaints);

/// Whether a file that begins so is an ACL document.
bool resemblesOpenconfig(std::string_view start) noexcept;

}  // namespace tcamshow
