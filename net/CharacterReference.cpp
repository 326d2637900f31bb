#include "private/CharacterReference.h"

#include <cstdlib>

namespace tarvik::xml {

char16_t codeUnit(std::string_view number)
{
    std::string digits(number.front() == 'x' ? "0" : "");
    digits += number;
    return static_cast<char16_t>(std::strtoul(digits.c_str(), nullptr, 0));
}

}  // namespace tarvik::xml
