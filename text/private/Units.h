// The UTF-16 units of a string, and strings put together from stretches of another.
#pragma once
#import <Foundation/NSString.h>

#include <string>

namespace tarvik {

inline std::u16string units(NSString *text)
{
    std::u16string out([text length], u'\0');
    [text getCharacters:reinterpret_cast<unichar *>(out.data()) range:NSMakeRange(0, out.size())];
    return out;
}

/// Builds a string from stretches of a source, in linear time. The platform makes no string of units that hold half a
/// surrogate pair, but it cuts and appends them: so the stretches are cut, never rebuilt.
class Splice {
public:
    explicit Splice(NSString *source)
        : source_(source), result_([NSMutableString stringWithCapacity:[source length]])
    {
    }
    /// Appends the source's units [from, to).
    void keep(NSUInteger from, NSUInteger to)
    {
        if (from < to)
            [result_ appendString:[source_ substringWithRange:NSMakeRange(from, to - from)]];
    }
    void add(NSString *text) { [result_ appendString:text]; }
    NSMutableString *result() const { return result_; }

private:
    NSString *source_;
    NSMutableString *result_;
};

}  // namespace tarvik
