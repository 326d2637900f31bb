/// \file
/// The UTF-16 units of a string, and strings made of units: what every conversion needs.
#pragma once
#import <Foundation/NSString.h>

#include <memory>
#include <string_view>

namespace tarvik::cf {

/// A copy of a range of a string's units, on the stack when it is short.
class Units {
public:
    Units(NSString *string, NSRange range) : count_(range.length)
    {
        if (count_ > kShort)
            long_.reset(new unichar[count_]);
        if (count_ > 0)
            [string getCharacters:begin() range:range];
    }
    explicit Units(NSString *string) : Units(string, NSMakeRange(0, string ? [string length] : 0)) {}

    const unichar *data() const { return long_ ? long_.get() : short_; }
    size_t size() const { return count_; }

private:
    static constexpr size_t kShort = 256;
    unichar *begin() { return long_ ? long_.get() : short_; }
    unichar short_[kShort];
    std::unique_ptr<unichar[]> long_;
    size_t count_;
};

/// A string of these units, owned by the caller. Half a surrogate pair is kept as it is.
NSString *newString(std::u16string_view units);

}  // namespace tarvik::cf
