/// CFArray.h: ordered lists. A CFArrayRef is an NSArray.
///
/// With &kCFTypeArrayCallBacks the elements are objects, retained. With null callbacks they are plain pointers that nobody
/// retains or compares by contents; such an array may be handed to Objective-C code as far as that does not take the
/// pointers for objects.
#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef const void *(*CFArrayRetainCallBack)(CFAllocatorRef allocator, const void *value);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef allocator, const void *value);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFArrayEqualCallBack)(const void *value1, const void *value2);

typedef struct {
    CFIndex                        version; ///< 0
    CFArrayRetainCallBack          retain;
    CFArrayReleaseCallBack         release;
    CFArrayCopyDescriptionCallBack copyDescription;
    CFArrayEqualCallBack           equal; ///< null: pointers are compared
} CFArrayCallBacks;
CF_EXPORT const CFArrayCallBacks kCFTypeArrayCallBacks;

typedef void (*CFArrayApplierFunction)(const void *value, void *context);

CF_EXPORT CFTypeID          CFArrayGetTypeID(void);
CF_EXPORT CFArrayRef        CFArrayCreate(CFAllocatorRef allocator, const void **values, CFIndex count, const CFArrayCallBacks *callBacks);
CF_EXPORT CFArrayRef        CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef array);
CF_EXPORT CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFArrayCallBacks *callBacks);
CF_EXPORT CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFArrayRef array);

CF_EXPORT CFIndex     CFArrayGetCount(CFArrayRef array);
CF_EXPORT const void *CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index); ///< null beyond the end
CF_EXPORT void        CFArrayGetValues(CFArrayRef array, CFRange range, const void **values);
CF_EXPORT CFIndex     CFArrayGetCountOfValue(CFArrayRef array, CFRange range, const void *value);
CF_EXPORT Boolean     CFArrayContainsValue(CFArrayRef array, CFRange range, const void *value);
CF_EXPORT CFIndex     CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range, const void *value); ///< or kCFNotFound
CF_EXPORT CFIndex     CFArrayGetLastIndexOfValue(CFArrayRef array, CFRange range, const void *value);  ///< or kCFNotFound
CF_EXPORT void        CFArrayApplyFunction(CFArrayRef array, CFRange range, CFArrayApplierFunction function, void *context);

CF_EXPORT void CFArrayAppendValue(CFMutableArrayRef array, const void *value);
CF_EXPORT void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other, CFRange range);
CF_EXPORT void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index, const void *value);
CF_EXPORT void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index, const void *value); ///< at the count: appends
CF_EXPORT void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index);
CF_EXPORT void CFArrayRemoveAllValues(CFMutableArrayRef array);
CF_EXPORT void CFArrayExchangeValuesAtIndices(CFMutableArrayRef array, CFIndex index1, CFIndex index2);
CF_EXPORT void CFArraySortValues(CFMutableArrayRef array, CFRange range, CFComparatorFunction comparator, void *context);

CF_EXTERN_C_END
