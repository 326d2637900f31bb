/// \file
/// Property lists in the older text form, and strings tables.
///
///     { key = (one, "two words", <0fbd77>); }        "key" = "value";   (a table has no braces)
///
/// Comments are those of C++; a text without blanks and brackets needs no quotes; within quotes stand \"
/// \\ \a \b \f \n \r \t \v, \123 (octal, a character of Latin 1) and \U00e9 (hexadecimal, a UTF-16 unit).
/// Leaves are strings, data, and GNUstep's numbers (<*I12>, <*R1.5>, <*BY>). A key of a table without a value
/// stands for itself.
#pragma once
#include "platform/Foundation/private/XMLPropertyList.h"

#include <string_view>

namespace tarvik::plist {

/// The list, owned by the caller, with mutable containers or none as asked; nil with a reason: "line 3: ...".
id newFromText(std::u16string_view text, Mutability mutability, std::string &why);

}  // namespace tarvik::plist
