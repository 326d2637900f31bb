// Four-character codes in tests, and what descriptors hold.
#pragma once
#include <Carbon/AEDataModel.h>
#include <Tarvik/support/OwnedDesc.h>

#include <cstring>
#include <string>
#include <string_view>

/// "docu"_code
constexpr FourCharCode operator""_code(const char *letters, size_t)
{
    return FourCharCode(uint8_t(letters[0])) << 24 | FourCharCode(uint8_t(letters[1])) << 16 |
           FourCharCode(uint8_t(letters[2])) << 8 | uint8_t(letters[3]);
}

inline tarvik::OwnedDesc descOf(DescType type, std::string_view bytes)
{
    tarvik::OwnedDesc desc;
    AECreateDesc(type, bytes.data(), Size(bytes.size()), desc.out());
    return desc;
}
template <class Number>
std::string rawBytes(Number n)
{
    return {reinterpret_cast<const char *>(&n), sizeof n};
}
template <class Number>
tarvik::OwnedDesc descOfNumber(DescType type, Number n)
{
    return descOf(type, rawBytes(n));
}

inline std::string bytesIn(const AEDesc *desc)
{
    std::string result(size_t(AEGetDescDataSize(desc)), '\0');
    AEGetDescData(desc, result.data(), Size(result.size()));
    return result;
}
/// A parameter as text or as a number; "none" and 0 when it is missing.
inline std::string textParam(const AppleEvent *event, AEKeyword key)
{
    tarvik::OwnedDesc text;
    return AEGetParamDesc(event, key, typeUTF8Text, text.out()) == noErr ? bytesIn(text.get()) : "none";
}
inline SInt32 numberParam(const AppleEvent *event, AEKeyword key)
{
    SInt32 n = 0;
    AEGetParamPtr(event, key, typeSInt32, nullptr, &n, sizeof n, nullptr);
    return n;
}
