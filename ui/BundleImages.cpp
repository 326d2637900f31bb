#include <CoreFoundation/CFString.h>
#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/ui/BundleImages.h>

namespace {

struct ProviderTraits {
    using Value = CGDataProviderRef;
    static Value empty() { return nullptr; }
    static void close(Value provider) { CGDataProviderRelease(provider); }
};

bool isPNG(CFStringRef type)
{
    return CFStringCompare(type, CFSTR("png"), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

}  // namespace

CGDataProviderRef CGDataProviderCreateWithBundleResource(CFStringRef name, CFStringRef type,
                                                         CFBundleRef bundle)
{
    if (!name || !type)
        return nullptr;
    const tarvik::CFOwned<CFURLRef> url(
        CFBundleCopyResourceURL(bundle ? bundle : CFBundleGetMainBundle(), name, type, nullptr));
    return url ? CGDataProviderCreateWithURL(url.get()) : nullptr;
}

CGImageRef CGImageCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle)
{
    const tarvik::Handle<ProviderTraits> source(CGDataProviderCreateWithBundleResource(name, type, bundle));
    if (!source)
        return nullptr;
    const auto create = isPNG(type) ? CGImageCreateWithPNGDataProvider : CGImageCreateWithJPEGDataProvider;
    return create(source.get(), nullptr, false, kCGRenderingIntentDefault);
}
