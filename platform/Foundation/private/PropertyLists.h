/// \file
/// Property lists in any of their forms, as they come from outside.
#pragma once
#include "platform/Foundation/private/XMLPropertyList.h"

namespace tarvik::plist {

/// Reads XML, the binary form, the older text form (braces, parentheses, "key" = "value";) or a strings table
/// of it. Text may be UTF-8 or UTF-16 with a byte order mark. Owned by the caller; nil with a reason.
id newFromData(NSData *data, Mutability mutability, std::string &why);

/// Whether the older text form is nested deeper than kDeepest levels: Foundation's reader of it recurses, and
/// would end the process.
bool isTextTooDeep(NSData *data);

}  // namespace tarvik::plist
