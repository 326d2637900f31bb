#include "private/Lexer.h"

#include "private/TextOperations.h"

#include <charconv>
#include <cmath>

namespace tarvik::osa {

namespace {

constexpr int64_t kLargestInteger = 536870911;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

class Lexer {
public:
    Lexer(std::string_view source, Heap &heap) : source_(source), heap_(heap) {}

    std::vector<Token> run()
    {
        if (source_.starts_with("\xEF\xBB\xBF"))
            at_ = 3;
        if (source_.substr(at_).starts_with("#!"))
            skipLine();
        while (at_ < source_.size())
            next();
        add(Token::newline, at_);
        add(Token::end, at_);
        return std::move(tokens_);
    }

private:
    char peek(size_t ahead = 0) const { return at_ + ahead < source_.size() ? source_[at_ + ahead] : '\0'; }
    bool sees(std::string_view text) const { return source_.substr(at_).starts_with(text); }
    bool takes(std::string_view text)
    {
        if (!sees(text))
            return false;
        at_ += text.size();
        return true;
    }
    Token &add(Token::Type type, size_t from)
    {
        Token token;
        token.type = type;
        token.spaceBefore = space_;
        token.range = {uint32_t(from), uint32_t(at_)};
        tokens_.push_back(std::move(token));
        space_ = false;
        return tokens_.back();
    }
    void symbol(size_t from, char32_t code) { add(Token::symbol, from).symbolCode = code; }
    [[noreturn]] void fail(size_t from, const std::string &message)
    {
        ScriptError failure{error::syntax, message};
        failure.range = {uint32_t(from), uint32_t(at_)};
        failure.located = true;
        throw failure;
    }
    void skipLine()
    {
        while (at_ < source_.size() && peek() != '\n' && peek() != '\r')
            ++at_;
    }
    void blockComment()
    {
        const size_t from = at_;
        for (size_t depth = 0;;) {
            if (at_ >= source_.size()) {
                at_ = from + 2;
                fail(from, "Expected “*)” but found end of script.");
            }
            if (takes("(*"))
                ++depth;
            else if (takes("*)")) {
                if (--depth == 0)
                    return;
            } else
                ++at_;
        }
    }
    void lineEnd()
    {
        if (!takes("\r\n"))
            ++at_;
    }

    void next()
    {
        const size_t from = at_;
        const char c = peek();
        if (c == ' ' || c == '\t' || takes("\xC2\xA0")) {
            at_ += at_ == from;
            space_ = true;
        } else if (c == '\n' || c == '\r') {
            lineEnd();
            add(Token::newline, from);
        } else if (sees("--") || c == '#') {
            skipLine();
        } else if (sees("(*")) {
            blockComment();
            space_ = true;
        } else if (takes("¬")) {
            while (peek() == ' ' || peek() == '\t')
                ++at_;
            if (sees("--"))
                skipLine();
            if (peek() == '\n' || peek() == '\r')
                lineEnd();
            else
                fail(from, "Expected end of line after “¬”.");
            space_ = true;
        } else if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
            number();
        } else if (c == '"') {
            string();
        } else if (c == '|') {
            const size_t close = source_.find('|', at_ + 1), line = source_.find_first_of("\r\n", at_);
            if (close == std::string_view::npos || close > line || close == at_ + 1) {
                at_ = std::min(source_.size(), std::min(close, line));
                fail(from, "Expected “|” but found end of line.");
            }
            const std::string_view name = source_.substr(at_ + 1, close - at_ - 1);
            at_ = close + 1;
            add(Token::barred, from).name = heap_.names.of(name);
        } else if (takes("«")) {
            const size_t close = source_.find("»", at_);
            if (close == std::string_view::npos)
                fail(from, "Expected “»” but found end of script.");
            const std::string_view text = source_.substr(at_, close - at_);
            at_ = close + 2;
            add(Token::raw, from).value = heap_.text(text);
        } else {
            wordOrSymbol();
        }
    }

    void number()
    {
        const size_t from = at_;
        while (isDigit(peek()))
            ++at_;
        bool whole = true;
        if (peek() == '.' && isDigit(peek(1))) {
            whole = false;
            for (++at_; isDigit(peek());)
                ++at_;
        } else if (peek() == '.' && !isLetter(peek(1))) {  // 2. is 2.0
            whole = false;
            ++at_;
        }
        if (peek() == 'E' || peek() == 'e') {
            size_t ahead = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
            if (isDigit(peek(ahead))) {
                whole = false;
                for (at_ += ahead; isDigit(peek());)
                    ++at_;
            }
        }
        double value = 0;
        std::string text(source_.substr(from, at_ - from));
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (result.ec != std::errc{} && value == 0 && text.find_first_of("123456789") == std::string::npos)
            value = 0;
        else if (result.ec != std::errc{})
            fail(from, "The number is too large or too small.");
        if (whole && isLetter(peek())) {  // 1st, 2nd, 3rd, 4th
            const size_t letters = at_;
            while (isLetter(peek()) || isDigit(peek()))
                ++at_;
            const std::string_view ending = source_.substr(letters, at_ - letters);
            if (ending != "st" && ending != "nd" && ending != "rd" && ending != "th")
                fail(from, "A identifier can’t go after this number.");
            add(Token::ordinal, from).value = Value::of(int64_t(std::min(value, 5e8)));
            return;
        }
        add(Token::number, from).value =
            whole && value <= double(kLargestInteger) ? Value::of(int64_t(value)) : Value::of(value);
    }

    void string()
    {
        const size_t from = at_++;
        std::string text;
        for (;; ++at_) {
            if (at_ >= source_.size()) {
                at_ = from + 1;
                fail(from, "Expected “\"” but found end of script.");
            }
            const char c = peek();
            if (c == '"')
                break;
            if (c != '\\') {
                text += c;
                continue;
            }
            switch (source_[++at_ < source_.size() ? at_ : at_ - 1]) {
            case 'n': text += '\n'; break;
            case 't': text += '\t'; break;
            case 'r': text += '\r'; break;
            case '"': text += '"'; break;
            case '\\': text += '\\'; break;
            default: fail(at_ - 1, "Expected “\"” but found unknown token.");
            }
        }
        ++at_;
        add(Token::string, from).value = heap_.text(text);
    }

    void wordOrSymbol()
    {
        const size_t from = at_;
        static constexpr struct {
            std::string_view text;
            char32_t code;
        } kSymbols[] = {{"<=", Token::lessEqual},
                        {">=", Token::greaterEqual},
                        {"/=", Token::notEqual},
                        {"≤", Token::lessEqual},
                        {"≥", Token::greaterEqual},
                        {"≠", Token::notEqual},
                        {"÷", '/'},
                        {"×", '*'}};
        for (const auto &[text, code] : kSymbols) {
            if (takes(text))
                return symbol(from, code);
        }
        if (!space_ && !tokens_.empty() && (takes("'s") || takes("’s"))) {
            if (!isLetter(peek()) && !isDigit(peek()))
                return symbol(from, Token::possessive);
            at_ = from;
        }
        if (isLetter(peek()) || uint8_t(peek()) >= 0x80) {
            while (isLetter(peek()) || isDigit(peek()) ||
                   (uint8_t(peek()) >= 0x80 && !sees("¬") && !sees("«") && !sees("»") && !sees("’") &&
                    !sees("≠") && !sees("≤") && !sees("≥") && !sees("÷") && !sees("×") && !sees("\xC2\xA0")))
                ++at_;
            if (at_ == from) {
                do
                    ++at_;
                while ((uint8_t(peek()) & 0xC0) == 0x80);
                fail(from, "Expected expression but found unknown token.");
            }
            std::string word(source_.substr(from, at_ - from));
            // isn't, doesn't
            if ((word.ends_with("isn") || word.ends_with("doesn")) && (takes("'t") || takes("’t")))
                word += "'t";
            add(Token::word, from).name = heap_.names.of(word);
            return;
        }
        const char c = peek();
        ++at_;
        if (std::string_view("()+-*/^&=<>{},:").find(c) == std::string_view::npos || c == '\0')
            fail(from, "Expected expression but found unknown token.");
        symbol(from, char32_t(c));
    }

    std::string_view source_;
    Heap &heap_;
    size_t at_ = 0;
    bool space_ = false;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> tokens(std::string_view source, Heap &heap)
{
    if (source.size() > UINT32_MAX / 2)
        raise(error::tooLarge, "The script is too large.");
    return Lexer(source, heap).run();
}

}  // namespace tarvik::osa
