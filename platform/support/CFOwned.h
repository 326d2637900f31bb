/// \file
/// An owned Core Foundation object: released at the end of the scope.
///
///     tarvik::CFOwned<CFURLRef> url(CFBundleCopyBundleURL(bundle));
///     return url ? use(url.get()) : nullptr;
#pragma once
#ifdef __cplusplus
#include <CoreFoundation/CFBase.h>
#include <Tarvik/support/Handle.h>

namespace tarvik {

struct CFOwnedTraits {
    using Value = CFTypeRef;
    static Value empty() { return nullptr; }
    static void close(Value object) { CFRelease(object); }
};

template <class Ref>
class CFOwned {
public:
    /// Takes over the caller's reference; null is empty.
    explicit CFOwned(Ref object = nullptr) : handle_(object) {}
    Ref get() const { return (Ref)handle_.get(); }  // some references point to what is not const
    explicit operator bool() const { return bool(handle_); }
    /// Gives up ownership: the caller releases the result.
    [[nodiscard]] Ref release() { return (Ref)handle_.release(); }

private:
    Handle<CFOwnedTraits> handle_;
};

}  // namespace tarvik
#endif
