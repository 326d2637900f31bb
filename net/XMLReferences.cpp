#include <Tarvik/net/XMLUtility.h>

#include "private/ByteSearch.h"
#include "private/CharacterReference.h"
#include "private/Projection.h"

#include <new>

using tarvik::xml::Marker;

namespace {

/// Text is converted in slices through a small buffer that stays in the cache: a std::string cannot be handed
/// to a kernel without being filled first.
constexpr std::size_t kSlice = 1024;

}  // namespace

void XMLUtility::ReplaceAllString(const std::string &text, const std::string &search,
                                  const std::string &replacement, std::string &out) const
{
    std::string result;  // apart from `out`, which may be any of the others
    if (!search.empty()) {
        const Marker marker(search);
        std::size_t position = 0;
        for (std::size_t found; (found = findFirst(text, marker, position)) != std::string::npos;) {
            result.append(text, position, found - position).append(replacement);
            position = found + search.size();
        }
        result.append(text, position);
    }
    out.swap(result);
}

bool XMLUtility::ConvertStringUTF8ToEntityReference(const std::string &text, std::string &out) const
{
    if (&out == &text)
        return ConvertStringUTF8ToEntityReference(std::string(text), out);
    out.clear();
    const auto &kernels = tarvik::xml::blockKernels();
    char buffer[kSlice * tarvik::xml::kLongestEntity + tarvik::xml::kKernelSlack];
    for (std::size_t read = 0; read < text.size();) {
        const std::string_view slice = std::string_view(text).substr(read, kSlice);
        const std::size_t written = kernels.escape(slice, buffer);
        read += slice.size();
        if (out.capacity() - out.size() < written)
            out.reserve(tarvik::xml::projected(out.size() + written, read, text.size()));
        out.append(buffer, written);
    }
    return !text.empty();
}

bool XMLUtility::ConvertStringUTF8ToCharacterReference(const std::string &, std::string &) const
{
    return true;
}

bool XMLUtility::ConvertStringUTF8ToReference(const std::string &text, std::string &out) const
{
    return ConvertStringUTF8ToEntityReference(text, out);
}

bool XMLUtility::ConvertStringEntityReferenceToUTF8(const std::string &text, std::string &out) const
{
    if (&out == &text)
        return ConvertStringEntityReferenceToUTF8(std::string(text), out);
    out.clear();
    out.reserve(text.size());
    const auto &kernels = tarvik::xml::blockKernels();
    char buffer[kSlice + tarvik::xml::kKernelSlack];
    for (std::size_t position = 0; position < text.size();)
        out.append(buffer, kernels.unescape(text, position, kSlice, buffer));
    return !text.empty();
}

bool XMLUtility::ConvertStringCharacterReferenceToUTF8(const std::string &text, std::string &out) const
{
    if (&out == &text)
        return ConvertStringCharacterReferenceToUTF8(std::string(text), out);
    out.clear();
    try {
        const Marker opening("&#");
        std::u16string run;  // UTF-16 of references that follow each other
        std::size_t position = 0;
        for (;;) {
            const std::size_t reference = findFirst(text, opening, position);
            if (reference == std::string::npos || reference + 2 == text.size())
                break;
            if (reference > position) {
                tarvik::xml::discardRun(run);
                out.append(text, position, reference - position);
            }
            position = reference + 2;
            const std::size_t end = text.find(';', position);
            if (end == std::string::npos)
                break;
            if (end > position)
                run.push_back(tarvik::xml::codeUnit(std::string_view(text).substr(position, end - position)));
            position = end + 1;
        }
        tarvik::xml::discardRun(run);
        out.append(text, position);
        return !text.empty();
    } catch (const std::bad_alloc &) {
        out.clear();
        return false;
    }
}

bool XMLUtility::ConvertStringReferenceToUTF8(const std::string &text, std::string &out) const
{
    std::string plain;
    const bool resolved = ConvertStringCharacterReferenceToUTF8(text, plain);
    return ConvertStringEntityReferenceToUTF8(plain, out) && resolved;
}
