/// CGDataProvider.h: where an image's bytes come from. A CGDataProviderRef is an NSData.
#pragma once
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

typedef struct CGDataProvider *CGDataProviderRef;

CF_EXPORT CGDataProviderRef CGDataProviderCreateWithURL(CFURLRef url); ///< of a file; null when it can't be read
CF_EXPORT CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data);
CF_EXPORT CFDataRef         CGDataProviderCopyData(CGDataProviderRef provider);
CF_EXPORT CGDataProviderRef CGDataProviderRetain(CGDataProviderRef provider);
CF_EXPORT void              CGDataProviderRelease(CGDataProviderRef provider); ///< null is ignored

CF_EXTERN_C_END
