#define TARVIK_METHOD_CLASS
#import <Tarvik/system/Method.h>

@implementation Method

- (id)initWithTarget:(id)target selector:(SEL)selector
{
    if (!target || !selector) {
        [self release];
        return nil;
    }
    if ((self = [super init])) {
        mTerget = target;
        mSelector = selector;
    }
    return self;
}

+ (id)methodWithTarget:(id)target selector:(SEL)selector
{
    return [[[self alloc] initWithTarget:target selector:selector] autorelease];
}

- (BOOL)responds
{
    return mTerget && mSelector && [mTerget respondsToSelector:mSelector];
}

- (id)perform
{
    return mSelector ? [mTerget performSelector:mSelector] : nil;
}
- (id)performWithObject:(id)object
{
    return mSelector ? [mTerget performSelector:mSelector withObject:object] : nil;
}
- (id)performWithObject:(id)object1 withObject:(id)object2
{
    return mSelector ? [mTerget performSelector:mSelector withObject:object1 withObject:object2] : nil;
}

@end

Class<Method> MethodClass(void) { return [Method class]; }
