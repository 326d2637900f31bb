// Escaping and unescaping in one pass must give what the passes give that they stand for.
#include <Tarvik/net/XMLUtility.h>

#include "tests/net/XMLSteps.h"

static void require(bool condition)
{
    if (!condition)
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const XMLUtility xml;
    std::string out;
    require(xml.ConvertStringEntityReferenceToUTF8(text, out) == !text.empty());
    require(out == steps::passed(text, steps::kUnescaping));

    require(xml.ConvertStringUTF8ToEntityReference(text, out) == !text.empty());
    require(out == steps::passed(text, steps::kEscaping));

    const std::string plain = steps::withoutReferences(text);
    require(xml.ConvertStringCharacterReferenceToUTF8(text, out) == !text.empty());
    require(out == plain);
    require(xml.ConvertStringReferenceToUTF8(text, out) == !plain.empty());
    require(out == steps::passed(plain, steps::kUnescaping));
    return 0;
}
