/// \file
/// Text: made, cut, joined, searched and compared.
#pragma once
#include "Values.h"

#include <optional>

namespace tarvik::osa {

/// What counts when text is compared; and whether applications' answers do.
struct Considering {
    enum : uint32_t {
        caseCounts = 1,
        diacriticals = 2,
        hyphens = 4,
        punctuation = 8,
        whiteSpace = 16,
        numericStrings = 32,
        responses = 64
    };
    /// As long as a script says nothing else.
    static constexpr uint32_t kDefault = diacriticals | hyphens | punctuation | whiteSpace | responses;
};

/// Room for `length` characters that the caller fills in.
Text *allocateText(Heap *heap, size_t length, uint8_t width);
std::string utf8(const Text *text);
inline std::string utf8(const Value &text) { return utf8(text.text()); }
/// Appends to the UTF-8 form.
void appendUTF8(std::string &out, char32_t character);

Value part(const Value &text, size_t from, size_t count);
Value concatenated(const Value &front, const Value &back);
/// All of them with one between each two.
Value joinedTexts(const std::vector<Value> &texts, const Value &between, Heap &heap);
/// Appends to the text that `front` holds: in place when nobody else holds it, so that a text built in a loop costs its length.
void append(Value &front, const Value &back);

/// Below 0, 0, above 0.
int compare(const Text *one, const Text *other, uint32_t considering);
/// The first place at or behind `start` where `wanted` stands, and how many characters it takes there.
struct Found {
    size_t at, length;
};
std::optional<Found> find(const Text *text, const Text *wanted, size_t start, uint32_t considering);
bool startsWith(const Text *text, const Text *start, uint32_t considering);
bool endsWith(const Text *text, const Text *end, uint32_t considering);

char32_t lowercase(char32_t character);

/// Stretches of a text: words, paragraphs, what stands between delimiters.
struct Stretch {
    size_t from, to;  // behind the last character
};
using Stretches = std::vector<Stretch>;
Stretches wordsOf(const Text *text);
Stretches paragraphsOf(const Text *text);
/// `delimiters`: a text or a list of texts.
Stretches textItemsOf(const Text *text, const Value &delimiters, uint32_t considering);

}  // namespace tarvik::osa
