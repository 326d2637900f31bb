// Bytes as hexadecimal text, and random bytes that are the same in every run.
#pragma once
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

inline std::string toHex(std::string_view bytes)
{
    std::string text;
    for (unsigned char byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

inline std::string fromHex(const std::string &text)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        bytes += static_cast<char>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

class RandomBytes {
public:
    explicit RandomBytes(uint32_t seed) : engine_(seed) {}
    std::string operator()(size_t length)
    {
        std::string bytes(length, '\0');
        for (char &byte : bytes)
            byte = static_cast<char>(engine_());
        return bytes;
    }

private:
    std::mt19937 engine_;
};
