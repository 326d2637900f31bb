/// \file
/// Source text into tokens. Comments and continued lines are gone, ends of lines are tokens.
#pragma once
#include "ScriptErrors.h"
#include "Values.h"

#include <string_view>
#include <vector>

namespace tarvik::osa {

struct Token {
    enum Type : uint8_t {
        word,
        barred /* |word| */,
        number,
        ordinal /* 2nd */,
        string,
        raw /* «class utf8» */,
        symbol,
        newline,
        end
    };
    /// Symbols: one character, or one of these.
    enum : char32_t { lessEqual = U'≤', greaterEqual = U'≥', notEqual = U'≠', possessive = U'’' };
    Type type = end;
    bool spaceBefore = false;
    Name name = 0;  // word, barred
    char32_t symbolCode = 0;
    Value value;  // number, ordinal, string; raw: its text
    Range range;
};

/// Throws ScriptError -2741 with its place.
std::vector<Token> tokens(std::string_view source, Heap &heap);

}  // namespace tarvik::osa
