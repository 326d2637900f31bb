#include <Tarvik/core/BlockEncryption.h>
#import <Tarvik/core/NSData+BlockEncryption.h>

#include <cstdlib>
#include <cstring>
#include <memory>

@implementation NSData (FoundationXBlockEncryption)

- (NSData *)encryptedData:(const void *)key
{
    void *copy = nullptr;
    size_t length = 0;
    if (MemAllocateEncryptedCopy([self bytes], [self length], &copy, &length, key) != 0)
        return nil;
    return [NSData dataWithBytesNoCopy:copy length:length freeWhenDone:YES];
}

- (NSData *)decryptedData:(const void *)key
{
    const NSUInteger length = [self length];
    const NSUInteger padded = (length + 7) / 8 * 8;  // decrypting works on whole blocks
    std::unique_ptr<void, decltype(&std::free)> copy(std::calloc(padded, 1), &std::free);
    if (length == 0 || !copy)
        return nil;
    std::memcpy(copy.get(), [self bytes], length);
    if (MemDecrypt(copy.get(), padded, key) != 0)
        return nil;
    return [NSData dataWithBytesNoCopy:copy.release() length:length freeWhenDone:YES];
}

- (void *)callocCopy
{
    const NSUInteger length = [self length];
    void *copy = length > 0 ? std::calloc(length, 1) : nullptr;
    if (copy)
        std::memcpy(copy, [self bytes], length);
    return copy;
}

@end

@implementation NSMutableData (FoundationXBlockEncryption)

- (void)deleteHead:(NSUInteger)count
{
    const NSUInteger length = [self length];
    auto *bytes = static_cast<uint8_t *>([self mutableBytes]);
    if (!bytes)
        return;
    const NSUInteger removed = count < length ? count : length;
    std::memmove(bytes, bytes + removed, length - removed);
    [self setLength:length - removed];
}

@end
