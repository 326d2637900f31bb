/// \file
/// A C++ range over an NSArray (or anything with `count` and `objectAtIndex:`).
///
///     for (NSString *name : tarvik::each<NSString>(names)) ...
///
/// nil is an empty range. The array must not change its length meanwhile.
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#import <Foundation/NSArray.h>

namespace tarvik {

template <class T>
class ArrayRange {
public:
    class Iterator {
    public:
        Iterator(NSArray *array, NSUInteger index) : array_(array), index_(index) {}
        T *operator*() const { return (T *)[array_ objectAtIndex:index_]; }
        Iterator &operator++()
        {
            ++index_;
            return *this;
        }
        bool operator!=(const Iterator &other) const { return index_ != other.index_; }

    private:
        NSArray *array_;
        NSUInteger index_;
    };

    explicit ArrayRange(NSArray *array) : array_(array), count_([array count]) {}
    Iterator begin() const { return {array_, 0}; }
    Iterator end() const { return {array_, count_}; }

private:
    NSArray *array_;
    NSUInteger count_;
};

template <class T = NSObject>
ArrayRange<T> each(NSArray *array)
{
    return ArrayRange<T>(array);
}

}  // namespace tarvik
#endif
