#include "platform/CoreFoundation/private/Bridging.h"

#include <cmath>
#include <cstring>
#include <limits>

using namespace tarvik::cf;

namespace {

/// The fixed-width type behind a type that is named by its C type; 0 for an unknown one.
CFNumberType fixedWidth(CFNumberType type)
{
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberSInt16Type:
    case kCFNumberSInt32Type:
    case kCFNumberSInt64Type:
    case kCFNumberFloat32Type:
    case kCFNumberFloat64Type: return type;
    case kCFNumberCharType: return kCFNumberSInt8Type;
    case kCFNumberShortType: return kCFNumberSInt16Type;
    case kCFNumberIntType: return kCFNumberSInt32Type;
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
    case kCFNumberNSIntegerType: return kCFNumberSInt64Type;
    case kCFNumberFloatType: return kCFNumberFloat32Type;
    case kCFNumberDoubleType:
    case kCFNumberCGFloatType: return kCFNumberFloat64Type;
    default: return 0;
    }
}

template <class T>
T load(const void *value)
{
    T result;
    memcpy(&result, value, sizeof result);
    return result;
}

template <class T>
bool store(void *value, T number, bool exact)
{
    memcpy(value, &number, sizeof number);
    return exact;
}

/// The nearest integer of the type towards zero.
template <class T>
bool storeInteger(NSNumber *number, bool isFloat, void *value)
{
    using Limits = std::numeric_limits<T>;
    if (isFloat) {
        const double wide = [number doubleValue];
        if (std::isnan(wide))
            return store<T>(value, 0, false);
        if (wide >= -double(Limits::min()))
            return store<T>(value, Limits::max(), false);
        if (wide < double(Limits::min()))
            return store<T>(value, Limits::min(), false);
        return store<T>(value, T(wide), std::trunc(wide) == wide);
    }
    const bool beyond = *[number objCType] == 'Q' && [number unsignedLongLongValue] > uint64_t(INT64_MAX);
    const int64_t wide = beyond ? INT64_MAX : [number longLongValue];
    if (wide > Limits::max())
        return store<T>(value, Limits::max(), false);
    if (wide < Limits::min())
        return store<T>(value, Limits::min(), false);
    return store<T>(value, T(wide), !beyond);
}

template <class T>
bool storeFloat(NSNumber *number, bool isFloat, void *value)
{
    const double wide = [number doubleValue];
    const T narrow = T(wide);
    bool exact = double(narrow) == wide || std::isnan(wide);
    if (!isFloat && std::fabs(double(narrow)) < 9.2e18)
        exact = int64_t(narrow) == [number longLongValue];
    return store<T>(value, narrow, exact);
}

}  // namespace

Boolean CFBooleanGetValue(CFBooleanRef boolean) { return [ns(boolean) boolValue]; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void *value)
{
    if (!value)
        return nullptr;
    return made<CFNumberRef>([&]() -> NSNumber * {
        switch (fixedWidth(type)) {
        case kCFNumberSInt8Type:  // a short object: Foundation takes a char for a boolean in places
            return [[NSNumber alloc] initWithShort:load<int8_t>(value)];
        case kCFNumberSInt16Type: return [[NSNumber alloc] initWithShort:load<int16_t>(value)];
        case kCFNumberSInt32Type: return [[NSNumber alloc] initWithInt:load<int32_t>(value)];
        case kCFNumberSInt64Type: return [[NSNumber alloc] initWithLongLong:load<int64_t>(value)];
        case kCFNumberFloat32Type: return [[NSNumber alloc] initWithFloat:load<float>(value)];
        case kCFNumberFloat64Type: return [[NSNumber alloc] initWithDouble:load<double>(value)];
        default: return nil;
        }
    });
}

CFNumberType CFNumberGetType(CFNumberRef number)
{
    if (!number)
        return 0;
    switch (*[ns(number) objCType]) {
    case 'c':
    case 'B': return kCFNumberSInt8Type;
    case 'C':
    case 's': return kCFNumberSInt16Type;
    case 'S':
    case 'i': return kCFNumberSInt32Type;
    case 'f': return kCFNumberFloat32Type;
    case 'd': return kCFNumberFloat64Type;
    default: return kCFNumberSInt64Type;
    }
}

CFIndex CFNumberGetByteSize(CFNumberRef number)
{
    switch (CFNumberGetType(number)) {
    case 0: return 0;
    case kCFNumberSInt8Type: return 1;
    case kCFNumberSInt16Type: return 2;
    case kCFNumberSInt32Type:
    case kCFNumberFloat32Type: return 4;
    default: return 8;
    }
}

Boolean CFNumberIsFloatType(CFNumberRef number)
{
    const CFNumberType type = CFNumberGetType(number);
    return type == kCFNumberFloat32Type || type == kCFNumberFloat64Type;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value)
{
    if (!number || !value)
        return false;
    const bool isFloat = CFNumberIsFloatType(number);
    switch (fixedWidth(type)) {
    case kCFNumberSInt8Type: return storeInteger<int8_t>(ns(number), isFloat, value);
    case kCFNumberSInt16Type: return storeInteger<int16_t>(ns(number), isFloat, value);
    case kCFNumberSInt32Type: return storeInteger<int32_t>(ns(number), isFloat, value);
    case kCFNumberSInt64Type: return storeInteger<int64_t>(ns(number), isFloat, value);
    case kCFNumberFloat32Type: return storeFloat<float>(ns(number), isFloat, value);
    case kCFNumberFloat64Type: return storeFloat<double>(ns(number), isFloat, value);
    default: return false;
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef other, void *)
{
    if (!number || !other)
        return kCFCompareEqualTo;
    return answer<CFComparisonResult>(kCFCompareEqualTo,
                                      [&] { return CFComparisonResult([ns(number) compare:ns(other)]); });
}
