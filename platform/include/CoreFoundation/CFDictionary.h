/// CFDictionary.h: values under keys. A CFDictionaryRef is an NSDictionary.
///
/// With the callbacks for types, keys and values are objects (a key is copied, as NSDictionary does). With other callbacks,
/// or null ones, they are plain pointers that are retained and compared as the callbacks say.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef const void *(*CFDictionaryRetainCallBack)(CFAllocatorRef allocator, const void *value);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef allocator, const void *value);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFDictionaryEqualCallBack)(const void *value1, const void *value2);
typedef CFHashCode (*CFDictionaryHashCallBack)(const void *value);

typedef struct {
    CFIndex                             version; ///< 0
    CFDictionaryRetainCallBack          retain;
    CFDictionaryReleaseCallBack         release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack           equal; ///< null: pointers are compared
    CFDictionaryHashCallBack            hash;  ///< null: pointers are hashed
} CFDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
CF_EXPORT const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;

typedef struct {
    CFIndex                             version; ///< 0
    CFDictionaryRetainCallBack          retain;
    CFDictionaryReleaseCallBack         release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack           equal;
} CFDictionaryValueCallBacks;
CF_EXPORT const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

typedef void (*CFDictionaryApplierFunction)(const void *key, const void *value, void *context);

CF_EXPORT CFTypeID               CFDictionaryGetTypeID(void);
CF_EXPORT CFDictionaryRef        CFDictionaryCreate(CFAllocatorRef allocator, const void **keys, const void **values, CFIndex count,
                                                    const CFDictionaryKeyCallBacks *keyCallBacks, const CFDictionaryValueCallBacks *valueCallBacks);
CF_EXPORT CFDictionaryRef        CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef dictionary);
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                           const CFDictionaryKeyCallBacks *keyCallBacks, const CFDictionaryValueCallBacks *valueCallBacks);
CF_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFDictionaryRef dictionary);

CF_EXPORT CFIndex     CFDictionaryGetCount(CFDictionaryRef dictionary);
CF_EXPORT const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key);
CF_EXPORT Boolean     CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void *key, const void **value);
CF_EXPORT Boolean     CFDictionaryContainsKey(CFDictionaryRef dictionary, const void *key);
CF_EXPORT Boolean     CFDictionaryContainsValue(CFDictionaryRef dictionary, const void *value);
CF_EXPORT CFIndex     CFDictionaryGetCountOfValue(CFDictionaryRef dictionary, const void *value);
CF_EXPORT void        CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void **keys, const void **values); ///< each may be null
CF_EXPORT void        CFDictionaryApplyFunction(CFDictionaryRef dictionary, CFDictionaryApplierFunction function, void *context);

CF_EXPORT void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void *key, const void *value);     ///< only if absent
CF_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void *key, const void *value);
CF_EXPORT void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary, const void *key, const void *value); ///< only if present
CF_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void *key);
CF_EXPORT void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary);

CF_EXTERN_C_END
