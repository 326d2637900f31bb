/// \file
/// An owning reference to an Objective-C object, with the two words that say where it came from.
///
///     auto made = tarvik::adopt([NSMutableArray new]);      // takes over the caller's reference
///     auto kept = tarvik::retain([array lastObject]);       // adds a reference of its own
///     return kept.autoreleased();                           // hands it out as a method result
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#import <Foundation/NSObject.h>

#include <utility>

namespace tarvik {

template <class T>
class Retained {
public:
    Retained() = default;
    Retained(const Retained &other) : object_([other.object_ retain]) {}
    Retained(Retained &&other) noexcept : object_(std::exchange(other.object_, nil)) {}
    Retained &operator=(Retained other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Retained() { [object_ release]; }

    static Retained adopting(T object) { return Retained(object); }

    T get() const { return object_; }
    explicit operator bool() const { return object_ != nil; }

    /// Gives up ownership: the caller releases the result.
    [[nodiscard]] T release() { return std::exchange(object_, nil); }
    /// The object as an autoreleased result; this reference is empty afterwards.
    T autoreleased() { return [release() autorelease]; }

private:
    explicit Retained(T object) : object_(object) {}
    T object_ = nil;
};

/// Takes over a reference that the caller owns (`new`, `alloc`, `copy`, `retain`).
template <class T>
Retained<T *> adopt(T *object)
{
    return Retained<T *>::adopting(object);
}
/// Adds a reference to an object that somebody else owns.
template <class T>
Retained<T *> retain(T *object)
{
    return Retained<T *>::adopting([object retain]);
}

}  // namespace tarvik
#endif
