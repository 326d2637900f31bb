#include <CoreFoundation/CFBase.h>
#import <Foundation/NSObject.h>

CFTypeRef CFRetain(CFTypeRef object) { return [(id)object retain]; }
void CFRelease(CFTypeRef object) { [(id)object release]; }
Boolean CFEqual(CFTypeRef object, CFTypeRef other) { return [(id)object isEqual:(id)other]; }
