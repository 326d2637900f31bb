// Conversion by one kernel, from memory of exactly the input's size, into rooms of a chosen size.
#pragma once

#include "UTF8Reference.h"
#include "text/private/UTF8Kernels.h"

#include <algorithm>
#include <vector>

inline std::u32string decodeInPieces(const tarvik::utf8::Kernel &kernel, const std::string &text, size_t room)
{
    const std::vector<uint8_t> in(text.begin(), text.end());
    std::vector<wchar_t> out(room);
    tarvik::utf8::DecodeCursor cursor{in.data(), in.data() + in.size(), nullptr, nullptr};
    std::u32string result;
    auto stop = tarvik::utf8::Stop::OutputFull;
    while (stop == tarvik::utf8::Stop::OutputFull) {
        cursor.out = out.data();
        cursor.outEnd = out.data() + room;
        cursor.streams = room % 2 != 0;
        stop = tarvik::utf8::decode(kernel, cursor);
        result.append(out.data(), cursor.out);
    }
    return result;
}

inline std::string encodeInPieces(const tarvik::utf8::Kernel &kernel, const std::u32string &text, size_t room)
{
    const std::vector<wchar_t> in(text.begin(), text.end());
    std::vector<char> out(room);
    tarvik::utf8::EncodeCursor cursor{in.data(), in.data() + in.size(), nullptr, nullptr};
    std::string result;
    auto stop = tarvik::utf8::Stop::OutputFull;
    while (stop == tarvik::utf8::Stop::OutputFull) {
        cursor.out = out.data();
        cursor.outEnd = out.data() + room;
        stop = tarvik::utf8::encode(kernel, cursor);
        result.append(out.data(), cursor.out);
    }
    return result;
}
