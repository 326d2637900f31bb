// UTF-8 both ways, by every kernel that runs here and by the public functions, against the rules in their plainest form.
// The first byte chooses the room that the kernels get at a time; the rest is the text, or (in fours) the elements.
#include "tests/support/UTF8Pieces.h"

#include <Tarvik/text/UTF8.h>

#include <cstdlib>
#include <cstring>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const size_t room = 3 + size_t{data[0]} * 2;
    const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
    std::u32string elements((size - 1) / 4, 0);
    if (!elements.empty())
        std::memcpy(elements.data(), text.data(), elements.size() * 4);

    const std::u32string decoded = referenceDecode(text);
    const std::string encoded = referenceEncode(elements);
    for (const auto &kernel : tarvik::utf8::kernels()) {
        if (!kernel.runsHere())
            continue;
        check(decodeInPieces(kernel, text, room) == decoded);
        check(encodeInPieces(kernel, elements, room) == encoded);
        check(encodeInPieces(kernel, decoded, room) == referenceEncode(decoded));
    }
    const wstring wide = Utils::utf8towstring(text);
    check(std::u32string(wide.begin(), wide.end()) == decoded);
    check(Utils::wstring2utf8(wstring(elements.begin(), elements.end())) == encoded);
    return 0;
}
