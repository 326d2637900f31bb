// An object's own text, for methods that raise nothing.
#pragma once
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>

#include <optional>
#include <string>

namespace tarvik {

/// In UTF-8; none where it has no such form, where memory is short, or where the object's class raises.
inline std::optional<std::string> ownText(NSString *text)
{
    std::optional<std::string> found;
    attempt([&] { found = utf8(text); });
    return found;
}

}  // namespace tarvik
