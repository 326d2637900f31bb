// Where one text stands in another, as the platform's search finds it.
#pragma once
#import <Foundation/NSString.h>

#include <optional>

namespace tarvik {

/// The occurrence within a range of the text. None for nil and for the empty text, which the platform would find at the
/// range's start. May raise what the platform raises.
inline std::optional<NSRange> occurrence(NSString *text, NSString *what, NSStringCompareOptions options,
                                         NSRange within)
{
    if ([what length] == 0)
        return std::nullopt;
    const NSRange found = [text rangeOfString:what options:options range:within];
    return found.length == 0 ? std::nullopt : std::optional(found);
}

inline std::optional<NSRange> occurrence(NSString *text, NSString *what, NSStringCompareOptions options)
{
    return occurrence(text, what, options, NSMakeRange(0, [text length]));
}

}  // namespace tarvik
