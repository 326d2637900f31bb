// The text-encoding converter: the first byte picks the encoding, the second the room for the result.
#include <Carbon/TextEncodingConverter.h>
#include <CoreFoundation/CFString.h>

#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    static const std::vector<CFStringEncoding> encodings = [] {
        std::vector<CFStringEncoding> list;
        for (const CFStringEncoding *at = CFStringGetListOfAvailableEncodings();
             *at != kCFStringEncodingInvalidId; ++at)
            list.push_back(*at);
        return list;
    }();
    const CFStringEncoding encoding = encodings[data[0] % encodings.size()];
    std::vector<uint8_t> in(data + 2, data + size), out(size_t(data[1]) * 8);
    for (const bool reading : {true, false}) {
        TECObjectRef converter = nullptr;
        if (TECCreateConverter(&converter, reading ? encoding : CFStringEncoding(kTextEncodingUnicodeDefault),
                               reading ? CFStringEncoding(kCFStringEncodingUTF8) : encoding) != noErr)
            std::abort();
        ByteCount read = 0, written = 0;
        const OSStatus status = TECConvertText(converter, in.data(), ByteCount(in.size()), &read, out.data(),
                                               ByteCount(out.size()), &written);
        TECDisposeConverter(converter);
        if (written > out.size() || (reading ? false : read > in.size()) ||
            (status == noErr && read != in.size()))
            std::abort();
    }
    return 0;
}
