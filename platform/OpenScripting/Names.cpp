#include "private/Names.h"

namespace tarvik::osa {

namespace {

constexpr const char *spellingOf(const char *identifier) { return identifier; }
constexpr const char *spellingOf(const char *, const char *spelling) { return spelling; }

std::string folded(std::string_view spelling)
{
    std::string key(spelling);
    for (char &c : key)
        c = char(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return key;
}

}  // namespace

Names::Names()
{
    spellings_.emplace_back();
    numbers_.emplace("", Name(Word::none));
#define TARVIK_OSA_WORD(identifier, ...) of(spellingOf(#identifier __VA_OPT__(, ) __VA_ARGS__));
    TARVIK_OSA_WORDS(TARVIK_OSA_WORD)
#undef TARVIK_OSA_WORD
}

Name Names::of(std::string_view spelling)
{
    const auto [place, isNew] = numbers_.try_emplace(folded(spelling), Name(spellings_.size()));
    if (isNew)
        spellings_.emplace_back(spelling);
    return place->second;
}

Name Names::find(std::string_view spelling) const
{
    const auto place = numbers_.find(folded(spelling));
    return place == numbers_.end() ? Name(Word::none) : place->second;
}

}  // namespace tarvik::osa
