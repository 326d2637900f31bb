#include "private/Parser.h"

#include <algorithm>
#include <cstring>

namespace tarvik::osa {

namespace {

/// Words that are never names of variables.
bool isReserved(Name word)
{
    static constexpr Name kReserved[] = {
        Word::about,  Word::above,  Word::after,       Word::against,  Word::and_,     Word::as,
        Word::at,     Word::before, Word::begins,      Word::below,    Word::between,  Word::but,
        Word::by,     Word::comes,  Word::considering, Word::contains, Word::contain,  Word::copy,
        Word::div,    Word::does,   Word::doesnt,      Word::else_,    Word::end,      Word::ends,
        Word::equal,  Word::equals, Word::error,       Word::every,    Word::exit,     Word::from,
        Word::given,  Word::global, Word::greater,     Word::if_,      Word::ignoring, Word::in,
        Word::into,   Word::is,     Word::isnt,        Word::less,     Word::local,    Word::mod,
        Word::not_,   Word::of,     Word::on,          Word::onto,     Word::or_,      Word::over,
        Word::repeat, Word::set,    Word::since,       Word::starts,   Word::tell,     Word::than,
        Word::that,   Word::then,   Word::through,     Word::thru,     Word::times,    Word::to,
        Word::try_,   Word::under,  Word::until,       Word::using_,   Word::where,    Word::while_,
        Word::whose,  Word::with,   Word::without,     Word::exists};
    return std::find(std::begin(kReserved), std::end(kReserved), word) != std::end(kReserved);
}

int64_t ordinalOf(Name word)
{
    static constexpr Name kOrdinals[] = {Word::first, Word::second,  Word::third,  Word::fourth, Word::fifth,
                                         Word::sixth, Word::seventh, Word::eighth, Word::ninth,  Word::tenth};
    const auto place = std::find(std::begin(kOrdinals), std::end(kOrdinals), word);
    return place == std::end(kOrdinals) ? 0 : place - std::begin(kOrdinals) + 1;
}

}  // namespace

// --- operators, the weakest first ----------------------------------------------------------------------

Node *Parser::expression()
{
    // `get x`: x. Not the handler or variable of that name, nor `get eof`.
    const bool isCall = isSymbol('(', 1) && !peek(1).spaceBefore;
    if (isWord(Word::get) && (startsOperand(1) || isWord(Word::every, 1) || isWord(Word::end, 1)) &&
        !isCall && !declared_.count(Word::get) && !labelAhead("get eof"))
        ++at_;
    return disjunction();
}

Node *Parser::disjunction()
{
    const Level level(*this);
    Node *left = conjunction();
    while (isWord(Word::or_)) {
        Node *node = make(Node::conjunction, left->range);
        ++at_;
        node->op = Word::or_;
        node->a = left;
        node->b = conjunction();
        left = finished(node);
    }
    return left;
}

Node *Parser::conjunction()
{
    Node *left = negation();
    while (isWord(Word::and_)) {
        Node *node = make(Node::conjunction, left->range);
        ++at_;
        node->op = Word::and_;
        node->a = left;
        node->b = negation();
        left = finished(node);
    }
    return left;
}

Node *Parser::negation()
{
    if (!isWord(Word::not_))
        return equality();
    const Level level(*this);
    Node *node = make(Node::negation);
    ++at_;
    node->a = negation();
    return finished(node);
}

/// Takes a comparison in any of its wordings; -1: there is none.
int Parser::comparison()
{
    const size_t start = at_;
    const auto none = [&] {
        at_ = start;
        return -1;
    };
    if (peek().type == Token::symbol) {
        switch (peek().symbolCode) {
        case '=': ++at_; return Node::equal;
        case Token::notEqual: ++at_; return Node::unequal;
        case '<': ++at_; return Node::less;
        case '>': ++at_; return Node::greater;
        case Token::lessEqual: ++at_; return Node::lessEqual;
        case Token::greaterEqual: ++at_; return Node::greaterEqual;
        default: return -1;
        }
    }
    if (peek().type != Token::word)
        return -1;
    bool negative = false, copula = false;
    if (takeWord(Word::is)) {
        copula = true;
        negative = takeWord(Word::not_);
    } else if (takeWord(Word::isnt)) {
        copula = negative = true;
    } else if (takeWords(Word::does, Word::not_) || takeWord(Word::doesnt)) {
        negative = true;
    }
    const auto orEqual = [&] {
        if (!takeWords(Word::or_, Word::equal))
            return false;
        takeWord(Word::to);
        return true;
    };
    if (takeWord(Word::less)) {
        takeWord(Word::than);
        return orEqual() ? (negative ? Node::greater : Node::lessEqual)
                         : (negative ? Node::greaterEqual : Node::less);
    }
    if (takeWord(Word::greater)) {
        takeWord(Word::than);
        return orEqual() ? (negative ? Node::less : Node::greaterEqual)
                         : (negative ? Node::lessEqual : Node::greater);
    }
    if (takeWord(Word::equal) || takeWord(Word::equals)) {
        takeWord(Word::to);
        return negative ? Node::unequal : Node::equal;
    }
    if (copula) {
        if (takeWord(Word::in) || takeWords(Word::contained, Word::by))
            return negative ? Node::isNotIn : Node::isIn;
        return negative ? Node::unequal : Node::equal;
    }
    if (takeWord(Word::contains) || takeWord(Word::contain))
        return negative ? Node::containsNot : Node::contains;
    if (takeWord(Word::comes) || takeWord(Word::come)) {
        if (takeWord(Word::before))
            return negative ? Node::greaterEqual : Node::less;
        if (takeWord(Word::after))
            return negative ? Node::lessEqual : Node::greater;
        return none();
    }
    if (!negative) {
        if (takeWords(Word::starts, Word::with) || takeWords(Word::start, Word::with) ||
            takeWords(Word::begins, Word::with) || takeWords(Word::begin, Word::with))
            return Node::startsWith;
        if (takeWords(Word::ends, Word::with) || takeWords(Word::end, Word::with))
            return Node::endsWith;
    }
    return none();
}

/// `application "x" is running`, `it is not frontmost`: the property of what stands before. Null: something else.
Node *Parser::assertion(Node *left, int op)
{
    const Token &before = tokens_[at_ - 1];
    const bool copula = before.type == Token::word &&
                        (before.name == Word::is || before.name == Word::isnt || before.name == Word::not_);
    const bool truth = isWord(Word::running) || isWord(Word::frontmost);
    if (!copula || !truth || (op != Node::equal && op != Node::unequal) || isWord(Word::of, 1) ||
        isWord(Word::in, 1) || declared_.count(peek().name))
        return nullptr;
    Node *node = make(Node::specifier, left->range);
    node->spec = {Specifier::property, peek().name, 0};
    node->a = left;
    ++at_;
    node = finished(node);
    if (op == Node::equal)
        return node;
    Node *negation = make(Node::negation, left->range);
    negation->a = node;
    return finished(negation);
}

Node *Parser::equality()
{
    Node *left = coercion();
    for (Range start = left->range;;) {
        const int op = comparison();
        if (op < 0)
            return left;
        if (Node *told = assertion(left, op)) {
            left = told;
            continue;
        }
        Node *node = make(Node::binary, start);
        node->op = uint8_t(op);
        node->a = left;
        node->b = coercion();
        left = finished(node);
    }
}

/// The class after `as`.
uint32_t Parser::typeCode()
{
    takeWord(Word::the);
    if (peek().type == Token::raw) {
        Node *node = rawTerm();
        if (!node->value.is(Kind::type))
            fail("Expected class name but found “«”.", node->range);
        return node->value.code();
    }
    if (peek().type == Token::word) {
        if (const auto *terms = vocabulary_.startingWith(peek().name)) {
            for (const Term &term : *terms) {
                size_t ahead = 0;
                while (ahead < term.words.size() && isWord(term.words[ahead], ahead))
                    ++ahead;
                if (ahead != term.words.size() ||
                    (term.kind != Term::type && term.kind != Term::element && term.kind != Term::property &&
                     term.kind != Term::constant))
                    continue;
                at_ += ahead;
                return term.code;
            }
        }
    }
    expected("class name");
}

Node *Parser::coercion()
{
    Node *left = joining();
    while (isWord(Word::as)) {
        Node *node = make(Node::coercion, left->range);
        ++at_;
        const Range start = peek().range;
        node->a = left;
        node->b = takeSymbol('(') ? nullptr : literal(Value::type(typeCode()), start);
        if (!node->b) {
            node->b = expression();
            expectSymbol(')');
        }
        left = joining(finished(node));
    }
    return left;
}

/// `left`: an operand that is there already, a coercion: 5 as text & "a".
Node *Parser::joining(Node *left)
{
    left = sum(left);
    while (isSymbol('&')) {
        Node *node = make(Node::binary, left->range);
        ++at_;
        node->op = Node::join;
        node->a = left;
        node->b = sum();
        left = finished(node);
    }
    return left;
}

Node *Parser::sum(Node *left)
{
    left = product(left);
    while (isSymbol('+') || isSymbol('-')) {
        Node *node = make(Node::binary, left->range);
        node->op = isSymbol('+') ? Node::add : Node::subtract;
        ++at_;
        node->a = left;
        node->b = product();
        left = finished(node);
    }
    return left;
}

Node *Parser::product(Node *left)
{
    left = power(left);
    for (;;) {
        Node::Operator op;
        if (isSymbol('*'))
            op = Node::multiply;
        else if (isSymbol('/'))
            op = Node::divide;
        else if (isWord(Word::div))
            op = Node::quotient;
        else if (isWord(Word::mod))
            op = Node::modulo;
        else
            return left;
        Node *node = make(Node::binary, left->range);
        ++at_;
        node->op = op;
        node->a = left;
        node->b = power();
        left = finished(node);
    }
}

Node *Parser::power(Node *base)
{
    if (!base)
        base = unary();
    if (!isSymbol('^'))
        return base;
    const Level level(*this);
    Node *node = make(Node::binary, base->range);
    ++at_;
    node->op = Node::power;
    node->a = base;
    node->b = power();
    return finished(node);
}

Node *Parser::unary()
{
    while (takeSymbol('+'))
        ;
    if (!isSymbol('-'))
        return referring();
    const Level level(*this);
    Node *node = make(Node::negate);
    ++at_;
    node->a = unary();
    if (node->a->kind == Node::literal && node->a->value.isNumber()) {
        const Value &number = node->a->value;
        return finished(
            literal(number.is(Kind::integer) ? Value::of(-number.integer()) : Value::of(-number.real()),
                    node->range));
    }
    return finished(node);
}

// --- places in things ----------------------------------------------------------------------------------

/// `item 1 of x`, `name of x's y`
Node *Parser::referring()
{
    const Level level(*this);
    Node *node = primary();
    const auto takesContainer = [](const Node *one) {
        return !one->a && (one->kind == Node::specifier || one->kind == Node::variable ||
                           one->kind == Node::call || one->kind == Node::labelledCall);
    };
    const auto contain = [&](Node *inner, Node *container) {
        if (inner->kind == Node::variable) {
            inner->kind = Node::specifier;
            inner->spec = {Specifier::property, inner->name, 0};
        }
        inner->a = container;
        inner->range.from = std::min(inner->range.from, container->range.from);
        finished(inner);
    };
    size_t steps = 0;
    while (isSymbol(Token::possessive)) {
        if (++steps > 200)
            fail("The script is nested too deeply.", peek().range);
        ++at_;
        Node *next = primary();
        if (!takesContainer(next))
            fail("Expected a property, element or handler call after “'s”.", next->range);
        contain(next, node);
        node = next;
    }
    // A constant of time may be a property, too: hours of x.
    if (isWord(Word::of) && node->kind == Node::literal && node->name && !ofIsParameter_) {
        node->kind = Node::specifier;
        node->spec = {Specifier::property, node->name, 0};
    }
    const bool of = isWord(Word::of) && !ofIsParameter_;
    const bool in = isWord(Word::in) && !inIsParameter_ && node->kind == Node::specifier;
    if ((of || in) && takesContainer(node)) {
        ++at_;
        contain(node, referring());
    }
    return node;
}

const Term *Parser::term(bool) const
{
    if (peek().type != Token::word)
        return nullptr;
    const auto *terms = vocabulary_.startingWith(peek().name);
    if (!terms)
        return nullptr;
    for (const Term &term : *terms) {
        size_t ahead = 0;
        while (ahead < term.words.size() && isWord(term.words[ahead], ahead))
            ++ahead;
        if (ahead != term.words.size())
            continue;
        if (ahead > 1)
            return &term;
        const Token &next = peek(1);
        if (next.type == Token::symbol && next.symbolCode == '(' && !next.spaceBefore &&
            term.kind != Term::element && term.kind != Term::elements && term.kind != Term::command)
            return nullptr;  // a handler of that name
        if (declared_.count(peek().name)) {
            const bool told = applicationsTold_ > 0 && term.kind == Term::property;
            const bool counted =
                (term.kind == Term::element || term.kind == Term::elements) &&
                (next.type == Token::number || (next.type == Token::word && next.name == Word::of));
            if (!told && !counted)
                return nullptr;
        }
        return &term;
    }
    return nullptr;
}

const Term *Parser::elementTerm() const
{
    const Term *found = term();
    return found && (found->kind == Term::element || found->kind == Term::elements) ? found : nullptr;
}

bool Parser::startsOperand(size_t ahead) const
{
    const Token &token = peek(ahead);
    switch (token.type) {
    case Token::number:
    case Token::string:
    case Token::barred: return true;
    case Token::symbol:
        return token.symbolCode == '(' || token.symbolCode == '{' ||
               (token.symbolCode == '-' && token.spaceBefore && !peek(ahead + 1).spaceBefore &&
                peek(ahead + 1).type != Token::newline);
    case Token::raw: return true;
    case Token::word:
        return !isReserved(token.name) && !(isWord(Word::partial, ahead) && isWord(Word::result, ahead + 1));
    default: return false;
    }
}

/// An index: no `of`, no operators without parentheses.
Node *Parser::operand()
{
    const Level level(*this);
    if (isSymbol('-'))
        return [&] {
            Node *node = make(Node::negate);
            ++at_;
            node->a = operand();
            return finished(node);
        }();
    if (const Term *element = elementTerm(); element && startsOperand(element->words.size()))
        return elementSpecifier(*element);
    return primary();
}

Node *Parser::elementSpecifier(const Term &term)
{
    Node *node = make(Node::specifier);
    at_ += term.words.size();
    node->spec = {term.kind == Term::elements ? Specifier::every : Specifier::index, term.name, term.code};
    if (takeWord(Word::from)) {
        node->spec.form = Specifier::range;
        node->b = operand();
        if (!takeWord(Word::to) && !takeWord(Word::thru) && !takeWord(Word::through))
            expected("“to” or “thru”");
        node->c = operand();
        return finished(node);
    }
    if (takeWord(Word::named)) {
        node->spec.form = Specifier::named;
        node->b = operand();
        return finished(node);
    }
    if (isWord(Word::id) && startsOperand(1)) {
        ++at_;
        node->spec.form = Specifier::id;
        node->b = operand();
        return finished(node);
    }
    takeWord(Word::index);
    if (startsOperand() && !(isWord(Word::its) || isSymbol('{') || isWord(Word::as))) {
        node->spec.form = Specifier::index;
        node->b = operand();
        if (node->b->kind == Node::literal && node->b->value.is(Kind::text))
            node->spec.form = Specifier::named;
        if (takeWord(Word::thru) || takeWord(Word::through)) {
            node->spec.form = Specifier::range;
            node->c = operand();
        }
        return finished(node);
    }
    if (term.kind == Term::element)
        node->spec.form = Specifier::every;
    return finished(node);
}

/// `first item`, `last word`, `some item`, `every paragraph`, `2nd word`
Node *Parser::ordinalSpecifier(Specifier::Form form, Node *index)
{
    const Term *element = elementTerm();
    if (!element)
        expected("class name");
    Node *node = make(Node::specifier);
    node->spec = {form, element->name, element->code};
    at_ += element->words.size();
    node->b = index;
    return finished(node);
}

Node *Parser::countOf()
{
    Node *node = make(Node::specifier);
    ++at_;
    takeWord(Word::of) || takeWord(Word::in);
    node->spec = {Specifier::property, Word::count, 0};
    node->a = referring();
    return finished(node);
}

// --- the smallest parts --------------------------------------------------------------------------------

Node *Parser::arguments(Node *node)
{
    expectSymbol('(');
    if (!takeSymbol(')')) {
        const bool in = std::exchange(inIsParameter_, false), of = std::exchange(ofIsParameter_, false);
        do
            node->kids.push_back(expression());
        while (takeSymbol(','));
        expectSymbol(')');
        inIsParameter_ = in;
        ofIsParameter_ = of;
    }
    return finished(node);
}

Node *Parser::listLiteral()
{
    const Level level(*this);
    const Range start = peek().range;
    ++at_;
    const bool in = std::exchange(inIsParameter_, false), of = std::exchange(ofIsParameter_, false);
    const auto label = [&]() -> size_t {  // how many words the label before a colon has; 0: none
        size_t ahead = 0;
        if (peek().type == Token::barred)
            return isSymbol(':', 1) ? 1 : 0;
        while (peek(ahead).type == Token::word && ahead < 4)
            ++ahead;
        return ahead && isSymbol(':', ahead) ? ahead : 0;
    };
    Node *node = make(label() ? Node::record : Node::list, start);
    if (!takeSymbol('}')) {
        do {
            if (node->kind == Node::record) {
                const size_t words = label();
                if (!words)
                    expected("property label");
                std::string spelling = heap_.names.spelling(peek().name);
                for (size_t i = 1; i < words; ++i)
                    spelling += " " + heap_.names.spelling(peek(i).name);
                node->names.push_back(heap_.names.of(spelling));
                at_ += words + 1;
            }
            node->kids.push_back(expression());
        } while (takeSymbol(','));
        expectSymbol('}');
    }
    inIsParameter_ = in;
    ofIsParameter_ = of;
    return finished(node);
}

Node *Parser::rawTerm()
{
    const Token &token = peek();
    const Text *text = token.value.text();
    std::string content;
    for (size_t i = 0; i < text->length; ++i)
        content += char((*text)[i] < 0x100 ? (*text)[i] : '?');
    const auto fourAt = [&](size_t at) {
        return uint32_t(uint8_t(content[at])) << 24 | uint32_t(uint8_t(content[at + 1])) << 16 |
               uint32_t(uint8_t(content[at + 2])) << 8 | uint8_t(content[at + 3]);
    };
    const Range range = token.range;
    ++at_;
    if (content.starts_with("class ") && content.size() == 10)
        return literal(Value::type(fourAt(6)), range);
    if (content.starts_with("constant ") && content.size() == 17)
        return literal(Value::constant(fourAt(13)), range);
    if (content.starts_with("data ") && content.size() >= 9 && content.size() % 2 == 1) {
        std::string bytes;
        for (size_t i = 9; i < content.size(); i += 2) {
            unsigned byte = 0;
            if (!std::isxdigit(uint8_t(content[i])) ||
                std::sscanf(content.substr(i, 2).c_str(), "%2x", &byte) != 1)
                fail("Expected “»” but found unknown token.", range);
            bytes += char(byte);
        }
        return literal(heap_.data(fourAt(5), std::move(bytes)), range);
    }
    if (content.starts_with("event ") && content.size() == 14) {
        Node *node = make(Node::command, range);
        node->code = fourAt(6);     // class
        node->clears = fourAt(10);  // id
        if (startsOperand())
            node->a = joining();
        while (peek().type == Token::word || peek().type == Token::barred) {
            if (!takeWord(Word::given))
                break;
            do {
                if (peek().type != Token::raw)
                    expected("“«class”");
                Node *key = rawTerm();
                expectSymbol(':');
                node->codes.push_back(key->value.is(Kind::type) ? key->value.code() : 0);
                node->kids.push_back(joining());
            } while (takeSymbol(','));
        }
        return finished(node);
    }
    fail("Expected “«class”, “«constant”, “«data” or “«event” but found unknown token.", range);
}

bool Parser::labelAhead(const char *label) const
{
    size_t ahead = 0;
    for (const char *at = label; *at; ++ahead) {
        const size_t length = std::strcspn(at, " ");
        if (!isWord(heap_.names.find({at, length}), ahead))
            return false;
        at += length + (at[length] == ' ');
    }
    return true;
}

void Parser::takeLabel(const char *label)
{
    at_ += 1 + size_t(std::count(label, label + std::strlen(label), ' '));
}

/// `do shell script "ls" without altering line endings`
Node *Parser::commandCall(const Command &command, Range start)
{
    Node *node = make(Node::command, start);
    node->verb = &command;
    const auto parameterAhead = [&]() -> const CommandParameter * {
        for (const CommandParameter &parameter : command.parameters) {
            if (!parameter.isFlag && labelAhead(parameter.label))
                return &parameter;
        }
        return nullptr;
    };
    const auto argument = [&](const CommandParameter *parameter) {
        const bool hasIn =
            std::any_of(command.parameters.begin(), command.parameters.end(),
                        [](const CommandParameter &one) { return !std::strcmp(one.label, "in"); });
        const bool in = std::exchange(inIsParameter_, inIsParameter_ || hasIn),
                   of = std::exchange(ofIsParameter_, false);
        Node *value;
        if (parameter && !std::strcmp(parameter->label, "as")) {
            const Range range = peek().range;
            value = literal({}, range);
            const uint32_t code = typeCode();
            const bool isConstant = typeName(code).starts_with("«class");
            value->value =
                isConstant && constantName(code)[0] != '\xC2' ? Value::constant(code) : Value::type(code);
        } else {
            value = joining();
        }
        inIsParameter_ = in;
        ofIsParameter_ = of;
        return value;
    };
    if (command.direct != Command::none && !endOfLine() && startsOperand() && !parameterAhead())
        node->a = argument(nullptr);
    if (command.direct == Command::required && !node->a)
        expected("expression");
    while (!endOfLine()) {
        if (const CommandParameter *parameter = parameterAhead()) {
            takeLabel(parameter->label);
            node->codes.push_back(parameter->code);
            node->kids.push_back(argument(parameter));
            continue;
        }
        if (!isWord(Word::with) && !isWord(Word::without))
            break;
        const bool value = isWord(Word::with);
        const size_t before = at_++;
        bool any = false;
        for (bool more = true; more;) {
            more = false;
            for (const CommandParameter &parameter : command.parameters) {
                if (parameter.isFlag && labelAhead(parameter.label)) {
                    const Range range = peek().range;
                    takeLabel(parameter.label);
                    node->codes.push_back(parameter.code);
                    node->kids.push_back(literal(Value::of(value), range));
                    more = any = true;
                    break;
                }
            }
            more = more && (takeSymbol(',') || takeWord(Word::and_));
        }
        if (!any) {
            at_ = before;
            break;
        }
    }
    return finished(node);
}

/// `findNumbers of list above 3 given rounding:true`
Node *Parser::labelled(Name name, Node *target)
{
    Node *node = make(Node::labelledCall);
    ++at_;
    node->name = name;
    node->a = target;
    if (takeWord(Word::of) || takeWord(Word::in) || (startsOperand() && !parameterLabelAt(at_).words))
        node->b = joining();
    while (peek().type == Token::word) {
        if (takeWord(Word::given)) {
            do {
                node->names.push_back(declaredName());
                expectSymbol(':');
                node->kids.push_back(joining());
                // A comma may as well be that of a list around the call.
            } while (isSymbol(':', 2) && takeSymbol(','));
        } else if (isWord(Word::with) || isWord(Word::without)) {
            const bool value = isWord(Word::with);
            ++at_;
            do {
                const Range range = peek().range;
                node->names.push_back(declaredName());
                node->kids.push_back(literal(Value::of(value), range));
            } while (takeSymbol(',') || takeWord(Word::and_));
        } else if (const ParameterLabel label = parameterLabelAt(at_); label.words) {
            node->names.push_back(label.name);
            at_ += label.words;
            node->kids.push_back(joining());
        } else {
            break;
        }
    }
    return finished(node);
}

Node *Parser::termPrimary(const Term &term)
{
    const Range start = peek().range;
    const size_t words = term.words.size();
    switch (term.kind) {
    case Term::property: {
        // hours, minutes, days ...: seconds, where they are not the property of a date
        const auto constant = [&]() -> int64_t {
            switch (term.name) {
            case Word::hours: return 3600;
            case Word::minutes: return 60;
            default: return 0;
            }
        }();
        at_ += words;
        if (constant) {
            Node *node = literal(Value::of(constant), start);
            node->name = term.name;
            return node;
        }
        if (term.name == Word::pi)
            return literal(Value::of(3.14159265358979323846), start);
        if (term.name == Word::class_ && !isWord(Word::of) &&
            !(at_ >= words + 1 && tokens_[at_ - words - 1].type == Token::symbol &&
              tokens_[at_ - words - 1].symbolCode == Token::possessive))
            return literal(Value::type(type::type_), start);
        Node *node = make(Node::specifier, start);
        node->spec = {Specifier::property, term.name, 0};
        return finished(node);
    }
    case Term::element:
    case Term::elements: {
        if (term.kind == Term::elements && isSymbol('(', words) && declared_.count(term.words[0]))
            break;
        if (term.code == type::date && (peek(words).type == Token::string || isSymbol('(', words))) {
            at_ += words;
            Node *node = make(Node::specify, start);
            node->code = kSpecifyDate;
            node->a = primary();
            return finished(node);
        }
        const bool asType = term.kind == Term::element && !startsOperand(words) &&
                            !isWord(Word::from, words) && !isWord(Word::of, words) &&
                            !isWord(Word::in, words) && !isWord(Word::named, words) &&
                            !isWord(Word::id, words);
        if (!asType) {
            if (term.kind == Term::element && term.code == type::number && isWord(Word::of, words))
                return countOf();
            return elementSpecifier(term);
        }
        at_ += words;
        return literal(Value::type(term.code), start);
    }
    case Term::type:
        at_ += words;
        if (term.code == type::application || term.code == type::oldFile || term.code == type::alias ||
            term.code == type::file) {
            takeWord(Word::id);
            if (startsOperand() && (peek().type == Token::string || peek().type == Token::barred ||
                                    isSymbol('(') || peek().type == Token::word)) {
                Node *node = make(Node::specify, start);
                node->code = term.code;
                node->a = operand();
                return finished(node);
            }
        }
        return literal(Value::type(term.code), start);
    case Term::constant: at_ += words; return literal(Value::constant(term.code), start);
    case Term::command: at_ += words; return commandCall(*term.verb, start);
    }
    at_ += words;
    return literal(Value::type(term.code), start);
}

Node *Parser::wordPrimary()
{
    const Token &token = peek();
    const Range start = token.range;
    const auto constant = [&](Value value) {
        ++at_;
        return literal(std::move(value), start);
    };
    const bool declared = declared_.count(token.name) != 0;
    if (const int64_t ordinal = ordinalOf(token.name); ordinal && !declared) {
        ++at_;
        return ordinalSpecifier(Specifier::index, literal(Value::of(ordinal), start));
    }
    const bool isCall = isSymbol('(', 1) && !peek(1).spaceBefore;
    // `a reference to x`, in a script that has a variable named `a`, too.
    const size_t article = token.name == Word::a ? 1 : 0;
    if ((isWord(Word::reference, article) || isWord(Word::ref, article)) &&
        ((isWord(Word::to, article + 1) && (article || !declared)) ||
         (!declared && startsOperand(article + 1)))) {
        at_ += article + 1;
        takeWord(Word::to);
        Node *node = make(Node::referenceTo, start);
        node->a = referring();
        return finished(node);
    }
    if (!declared && !isCall) {
        switch (token.name) {
        case Word::true_: return constant(Value::of(true));
        case Word::false_: return constant(Value::of(false));
        case Word::tab: return constant(heap_.text("\t"));
        case Word::return_: return constant(heap_.text("\r"));
        case Word::linefeed: return constant(heap_.text("\n"));
        case Word::space: return constant(heap_.text(" "));
        case Word::quote: return constant(heap_.text("\""));
        case Word::days: return constant(Value::of(int64_t(86400)));
        case Word::weeks: return constant(Value::of(int64_t(604800)));
        case Word::missing:
            if (isWord(Word::value, 1)) {
                ++at_;
                return constant(Value::missing());
            }
            break;
        case Word::it: ++at_; return make(Node::it, start);
        case Word::me: ++at_; return make(Node::me, start);
        case Word::result: ++at_; return make(Node::result, start);
        case Word::my:
        case Word::its: {
            Node *owner = make(token.name == Word::my ? Node::me : Node::it, start);
            ++at_;
            Node *node = primary();
            if (node->kind == Node::variable) {
                node->kind = Node::specifier;
                node->spec = {Specifier::property, node->name, 0};
            }
            if (node->a || (node->kind != Node::specifier && node->kind != Node::call &&
                            node->kind != Node::labelledCall))
                fail("Expected a property, element or handler call after “my”.", node->range);
            node->a = owner;
            return finished(node);
        }
        case Word::continue_: {
            ++at_;
            Node *node = primary();
            if ((node->kind != Node::call && node->kind != Node::labelledCall) || node->a)
                fail("Expected a handler call after “continue”.", node->range);
            node->flag = true;
            return node;
        }
        case Word::AppleScript: return constant(Value::type(code("ascr")));
        case Word::current:
            if (isWord(Word::application, 1)) {
                at_ += 2;
                Node *node = make(Node::specify, start);
                node->code = kSpecifyApplication;
                return finished(node);
            }
            break;
        case Word::every: ++at_; return ordinalSpecifier(Specifier::every, nullptr);
        case Word::some: ++at_; return ordinalSpecifier(Specifier::some, nullptr);
        case Word::middle: ++at_; return ordinalSpecifier(Specifier::middle, nullptr);
        case Word::last:
            ++at_;
            return ordinalSpecifier(Specifier::index, literal(Value::of(int64_t(-1)), start));
        case Word::front:
        case Word::back:
        case Word::beginning:
        case Word::end: {
            const bool first = token.name == Word::front || token.name == Word::beginning;
            if (isWord(Word::of, 1) || isWord(Word::in, 1) || token.name == Word::beginning ||
                token.name == Word::end) {
                ++at_;
                Node *node = make(Node::specifier, start);
                node->spec = {first ? Specifier::beginning : Specifier::end, token.name, 0};
                return node;
            }
            ++at_;
            return ordinalSpecifier(Specifier::index, literal(Value::of(int64_t(first ? 1 : -1)), start));
        }
        case Word::count:
            if (isWord(Word::of, 1) || startsOperand(1) || isWord(Word::every, 1))
                return countOf();
            break;
        case Word::number:
            if (isWord(Word::of, 1))
                return countOf();
            break;
        default: break;
        }
    }
    if (isCall && !declared_.count(token.name)) {
        const Term *found = term();
        if (!found || token.name == Word::run ||
            (found->kind != Term::element && found->kind != Term::elements && found->kind != Term::command &&
             found->kind != Term::type)) {
            Node *node = make(Node::call, start);
            node->name = token.name;
            ++at_;
            return arguments(node);
        }
    }
    if (isCall && declared_.count(token.name)) {
        Node *node = make(Node::call, start);
        node->name = token.name;
        ++at_;
        return arguments(node);
    }
    if (labelledHandlers_.count(token.name) && token.name != Word::open && token.name != Word::run &&
        token.name != Word::quit && !declared)
        return labelled(token.name, nullptr);
    if (const Term *found = term())
        return termPrimary(*found);
    if (isReserved(token.name) && !declared)
        expected("expression");
    ++at_;
    Node *node = make(Node::variable, start);
    node->name = token.name;
    if (isSymbol('(')) {
        node->kind = Node::call;
        return arguments(node);
    }
    return node;
}

Node *Parser::primary()
{
    const Level level(*this);
    if (isWord(Word::the)) {
        if (const Term *found = term(); found && found->kind == Term::command)
            return termPrimary(*found);
        ++at_;
    }
    const Token &token = peek();
    const Range start = token.range;
    switch (token.type) {
    case Token::number:
    case Token::string: ++at_; return literal(token.value, start);
    case Token::ordinal: ++at_; return ordinalSpecifier(Specifier::index, literal(token.value, start));
    case Token::raw: return rawTerm();
    case Token::barred: {
        Node *node = make(Node::variable, start);
        node->name = token.name;
        ++at_;
        if (isSymbol('(')) {
            node->kind = Node::call;
            return arguments(node);
        }
        return node;
    }
    case Token::word: return wordPrimary();
    case Token::symbol:
        if (token.symbolCode == '{')
            return listLiteral();
        if (token.symbolCode == '(') {
            ++at_;
            const bool in = std::exchange(inIsParameter_, false), of = std::exchange(ofIsParameter_, false);
            Node *node = expression();
            expectSymbol(')');
            inIsParameter_ = in;
            ofIsParameter_ = of;
            // What stands in parentheses is whole: `(item 1) of x` is not asked for.
            if (node->kind == Node::specifier && !node->a)
                node->a = make(Node::it, start);
            return finished(node);
        }
        break;
    default: break;
    }
    expected("expression");
}

}  // namespace tarvik::osa
