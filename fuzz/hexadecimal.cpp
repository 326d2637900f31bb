// Any text as hexadecimal: it stays within the buffer that its length asks for, and what was written by us
// reads back.
#include <Tarvik/crypto/CDSAUtilityBase.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const size_t length = std::strlen(text.c_str());
    std::vector<unsigned char> bytes(length / 2);
    // An empty vector may have no address, which is another case.
    unsigned char none;
    if (CDSAUtilityBase::convertHEXStringToHEXValue(text.c_str(), bytes.empty() ? &none : bytes.data()) !=
        length)
        std::abort();

    std::vector<char> written(2 * size + 1);
    std::vector<unsigned char> back(size + 1);
    CDSAUtilityBase::convertHEXValueToHEXString(data, static_cast<int>(size), written.data());
    if (CDSAUtilityBase::convertHEXStringToHEXValue(written.data(), back.data()) != 2 * size ||
        !std::equal(data, data + size, back.data()))
        std::abort();
    return 0;
}
