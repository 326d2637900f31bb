#include "private/Parser.h"
#include "private/TextOperations.h"

#include <algorithm>

namespace tarvik::osa {

namespace {

constexpr size_t kDeepest = 200;
constexpr Name kLabels[] = {Word::about, Word::above,   Word::against, Word::around,  Word::at,
                            Word::below, Word::beneath, Word::beside,  Word::between, Word::by,
                            Word::for_,  Word::from,    Word::into,    Word::on,      Word::onto,
                            Word::over,  Word::since,   Word::thru,    Word::through, Word::under};
constexpr struct {
    Name first, second, phrase;
} kLabelsOfTwoWords[] = {{Word::apart, Word::from, Word::apartFrom},
                         {Word::aside, Word::from, Word::asideFrom},
                         {Word::instead, Word::of, Word::insteadOf},
                         {Word::out, Word::of, Word::outOf}};

}  // namespace

Parser::ParameterLabel Parser::parameterLabelAt(size_t at) const
{
    const Token &word = tokens_[at];
    if (word.type != Token::word)
        return {};
    if (std::find(std::begin(kLabels), std::end(kLabels), word.name) != std::end(kLabels))
        return {word.name, 1};
    const Token &next = tokens_[std::min(at + 1, tokens_.size() - 1)];
    for (const auto &[first, second, phrase] : kLabelsOfTwoWords) {
        if (word.name == first && next.type == Token::word && next.name == second)
            return {phrase, 2};
    }
    return {};
}

Parser::Level::Level(Parser &parser) : parser(parser)
{
    if (++parser.depth_ > kDeepest) {
        --parser.depth_;
        parser.fail("The script is nested too deeply.", parser.peek().range);
    }
}

Parser::Parser(std::vector<Token> tokens, Heap &heap, const Vocabulary &vocabulary, Tree &tree)
    : tokens_(std::move(tokens)), heap_(heap), vocabulary_(vocabulary), tree_(tree)
{
    collectDeclared();
}

Tree parse(std::string_view source, Heap &heap, const Vocabulary &vocabulary)
{
    Tree tree;
    Parser parser(tokens(source, heap), heap, vocabulary, tree);
    tree.root = parser.script();
    return tree;
}

/// A word that is also a term of the language is a variable where the script uses it as one: `set name to 5`,
/// `on greet(name)`, `repeat with day in week`. A property that is set in a `tell application` is the application's.
void Parser::collectDeclared()
{
    bool lineStart = true;
    std::vector<bool> tells;  // of applications?
    bool tellsOnLine = false;
    const bool hasBareEnd =
        std::adjacent_find(tokens_.begin(), tokens_.end(), [](const Token &one, const Token &next) {
            return one.type == Token::word && one.name == Word::end && next.type == Token::newline;
        }) != tokens_.end();  // then a `tell` may end without saying so
    const auto isProperty = [&](const Token &token) {
        const auto *terms = token.type == Token::word ? vocabulary_.startingWith(token.name) : nullptr;
        return terms && std::any_of(terms->begin(), terms->end(), [](const Term &term) {
                   return term.kind == Term::property && term.words.size() == 1;
               });
    };
    const auto beginTell = [&](size_t at) {
        const bool application =
            tokens_[at + 1].type == Token::word &&
            (tokens_[at + 1].name == Word::application || tokens_[at + 1].name == Word::app) && !hasBareEnd;
        size_t end = at;
        while (end < tokens_.size() && tokens_[end].type != Token::newline &&
               !(tokens_[end].type == Token::word && tokens_[end].name == Word::to))
            ++end;
        if (end < tokens_.size() && tokens_[end].type == Token::word)
            tellsOnLine = application;
        else
            tells.push_back(application);
    };
    for (size_t i = 0; i + 1 < tokens_.size(); ++i) {
        const Token &token = tokens_[i], &next = tokens_[i + 1];
        const auto declares = [&](size_t at) {
            if (at < tokens_.size() && tokens_[at].type == Token::word)
                declared_.insert(tokens_[at].name);
        };
        if (token.type == Token::word) {
            switch (token.name) {
            case Word::tell:
                if (lineStart)
                    beginTell(i);
                break;
            case Word::end:
                if (lineStart && next.type == Token::word && next.name == Word::tell && !tells.empty())
                    tells.pop_back();
                break;
            case Word::set:
                if ((tellsOnLine || (!tells.empty() && tells.back())) && isProperty(next))
                    break;
                if (next.type == Token::word && i + 2 < tokens_.size() &&
                    tokens_[i + 2].type == Token::word && tokens_[i + 2].name == Word::to)
                    declares(i + 1);
                break;
            case Word::property:
            case Word::prop:
                if (lineStart)
                    declares(i + 1);
                break;
            case Word::local:
            case Word::global:
                if (lineStart) {
                    for (size_t k = i + 1; k < tokens_.size() && tokens_[k].type != Token::newline; ++k)
                        declares(k);
                }
                break;
            case Word::with:
                if (i > 0 && tokens_[i - 1].type == Token::word && tokens_[i - 1].name == Word::repeat)
                    declares(i + 1);
                break;
            case Word::on:
            case Word::to:
                if (!lineStart || next.type != Token::word || next.name == Word::error)
                    break;
                if (i + 2 < tokens_.size() && tokens_[i + 2].type == Token::symbol &&
                    tokens_[i + 2].symbolCode == '(') {
                    for (size_t k = i + 3; k < tokens_.size() && tokens_[k].type != Token::newline; ++k)
                        declares(k);
                } else if (i + 2 < tokens_.size() && tokens_[i + 2].type != Token::newline) {
                    labelledHandlers_.insert(next.name);
                    for (size_t k = i + 2; k < tokens_.size() && tokens_[k].type != Token::newline; ++k) {
                        if (const size_t words = parameterLabelAt(k).words)
                            k += words - 1;
                        else if (tokens_[k].type == Token::word && tokens_[k].name != Word::of &&
                                 tokens_[k].name != Word::given)
                            declares(k);
                    }
                }
                break;
            default: break;
            }
        }
        lineStart = token.type == Token::newline;
        tellsOnLine = tellsOnLine && !lineStart;
    }
    // The words of the grammar stay what they are.
    for (const Name word :
         {Word::the, Word::it, Word::me, Word::my, Word::to, Word::of, Word::in, Word::end, Word::beginning,
          Word::true_, Word::false_, Word::item, Word::text, Word::given, Word::date})
        declared_.erase(word);
}

std::string Parser::found(const Token &token) const
{
    switch (token.type) {
    case Token::word: {
        const auto *terms = vocabulary_.startingWith(token.name);
        if (terms && terms->back().words.size() == 1) {
            switch (terms->back().kind) {
            case Term::property: return "property";
            case Term::command: return "command name";
            case Term::constant: return "application constant or consideration";
            default: return "class name";
            }
        }
        return token.name < Word::AppleScript ? "“" + heap_.names.spelling(token.name) + "”" : "identifier";
    }
    case Token::barred: return "identifier";
    case Token::number:
    case Token::ordinal: return "number";
    case Token::string: return "“\"”";
    case Token::raw: return "“«”";
    case Token::symbol: {
        std::string text = "“";
        if (token.symbolCode == Token::possessive)
            text += "'s";
        else
            appendUTF8(text, token.symbolCode);
        return text + "”";
    }
    case Token::newline: return at_ + 2 >= tokens_.size() ? "end of script" : "end of line";
    default: return "end of script";
    }
}

void Parser::fail(const std::string &message, Range range)
{
    ScriptError failure{error::syntax, message};
    failure.range = range;
    failure.located = true;
    throw failure;
}

void Parser::expected(const std::string &what)
{
    fail("Expected " + what + " but found " + found(peek()) + ".", peek().range);
}

bool Parser::takeWord(Name word)
{
    if (!isWord(word))
        return false;
    ++at_;
    return true;
}

bool Parser::takeSymbol(char32_t symbol)
{
    if (!isSymbol(symbol))
        return false;
    ++at_;
    return true;
}

void Parser::expectWord(Name word)
{
    if (!takeWord(word))
        expected("“" + heap_.names.spelling(word) + "”");
}

void Parser::expectSymbol(char32_t symbol)
{
    if (!takeSymbol(symbol))
        expected(std::string("“") + char(symbol) + "”");
}

void Parser::skipLines()
{
    while (peek().type == Token::newline)
        ++at_;
}

void Parser::endLine()
{
    if (peek().type == Token::end)
        return;
    if (peek().type != Token::newline)
        expected("end of line");
    ++at_;
}

Node *Parser::script()
{
    Node *root = make(Node::block);
    for (skipLines(); peek().type != Token::end; skipLines())
        statementInto(root);
    return finished(root);
}

bool Parser::atEnd() const { return isWord(Word::end) || peek().type == Token::end; }
bool Parser::atEndOrElse() const { return atEnd() || isWord(Word::else_); }
bool Parser::atEndOrOnError() const { return atEnd() || (isWord(Word::on) && isWord(Word::error, 1)); }

Node *Parser::body(bool (Parser::*ends)() const)
{
    const Level level(*this);
    Node *block = make(Node::block);
    for (skipLines(); !(this->*ends)(); skipLines())
        statementInto(block);
    return finished(block);
}

void Parser::statementInto(Node *block)
{
    block->kids.push_back(statement());
    endLine();
}

/// `end`, `end repeat`: the words may be left out.
void Parser::closeBlock(const char *what, std::initializer_list<Name> words)
{
    if (!isWord(Word::end))
        expected("“end”");
    ++at_;
    if (endOfLine())
        return;
    for (const Name word : words) {
        if (!takeWord(word))
            fail("Expected “" + std::string(what) + "” but found " + found(peek()) + ".", peek().range);
    }
}

Name Parser::declaredName()
{
    const Token &token = peek();
    if (token.type != Token::barred && (token.type != Token::word || token.name == Word::the))
        expected("variable name");
    ++at_;
    return token.name;
}

Node *Parser::statement()
{
    const Level level(*this);
    const Range start = peek().range;
    if (peek().type == Token::word) {
        switch (peek().name) {
        case Word::set:
            if (!isWord(Word::the, 1) ||
                !(peek(2).type == Token::word && heap_.names.spelling(peek(2).name) == "clipboard")) {
                if (peek(1).type == Token::word && heap_.names.find("eof") == peek(1).name)
                    break;
                return setStatement();
            }
            break;
        case Word::copy: return copyStatement();
        case Word::put: {
            if (peek(1).type == Token::word || peek(1).type == Token::string || peek(1).type == Token::number)
                return copyStatement();
            break;
        }
        case Word::if_: return conditional();
        case Word::repeat: return loop();
        case Word::try_: return trial();
        case Word::tell: return tell();
        case Word::considering:
        case Word::ignoring: return consider();
        case Word::error: return failure();
        case Word::exit: {
            ++at_;
            takeWord(Word::repeat);
            return finished(make(Node::leave, start));
        }
        case Word::return_: {
            ++at_;
            Node *node = make(Node::giveBack, start);
            if (!endOfLine())
                node->a = expression();
            return finished(node);
        }
        case Word::local: return nameList(Node::locals);
        case Word::global: return nameList(Node::globals);
        case Word::property:
        case Word::prop: return propertyDeclaration();
        case Word::script:
            if (peek(1).type == Token::newline ||
                ((peek(1).type == Token::word || peek(1).type == Token::barred) &&
                 peek(2).type == Token::newline))
                return scriptObject();
            break;
        case Word::on:
        case Word::to: return handler();
        case Word::log: {
            ++at_;
            Node *node = make(Node::log, start);
            node->a = expression();
            return finished(node);
        }
        case Word::with:
            if (isWord(Word::timeout, 1)) {
                at_ += 2;
                takeWord(Word::of);
                Node *node = make(Node::timeout, start);
                node->a = expression();
                takeWord(Word::seconds) || takeWord(Word::second);
                endLine();
                node->b = body(&Parser::atEnd);
                closeBlock("timeout", {Word::timeout});
                return finished(node);
            }
            break;
        case Word::using_:
            if (isWord(Word::terms, 1) && isWord(Word::from, 2)) {
                at_ += 3;
                expression();
                endLine();
                Node *node = body(&Parser::atEnd);
                if (takeWord(Word::end) && takeWord(Word::using_))
                    takeWords(Word::terms, Word::from);
                return node;
            }
            break;
        case Word::use: {  // versions and additions: always there
            while (!endOfLine())
                ++at_;
            return finished(make(Node::nothing, start));
        }
        case Word::end:
        case Word::else_: expected("expression");
        default: break;
        }
    }
    if (takeWord(Word::get)) {
        if (heap_.names.find("eof") == peek().name && peek().type == Token::word)
            --at_;
    }
    Node *node = make(Node::expression, start);
    node->a = expression();
    return finished(node);
}

Node *Parser::nameList(Node::Kind kind)
{
    Node *node = make(kind);
    ++at_;
    do
        node->names.push_back(declaredName());
    while (takeSymbol(','));
    return finished(node);
}

Node *Parser::propertyDeclaration()
{
    Node *node = make(Node::property);
    ++at_;
    node->name = declaredName();
    expectSymbol(':');
    node->a = expression();
    return finished(node);
}

/// What may be assigned to: a variable, a place in something, or a list or record of such.
Node *Parser::pattern()
{
    const Level level(*this);
    Node *node = referring();
    std::vector<Node *> all{node};
    while (!all.empty()) {
        const Node *one = all.back();
        all.pop_back();
        switch (one->kind) {
        case Node::variable:
        case Node::specifier:
        case Node::result:
        case Node::it: break;
        case Node::list:
        case Node::record: all.insert(all.end(), one->kids.begin(), one->kids.end()); break;
        default: fail("Can’t set this: expected a variable, property or element.", one->range);
        }
    }
    return node;
}

Node *Parser::setStatement()
{
    Node *node = make(Node::set);
    ++at_;
    node->a = pattern();
    if (!takeWord(Word::to))
        expected("“to”");
    node->b = expression();
    return finished(node);
}

Node *Parser::copyStatement()
{
    Node *node = make(Node::copy);
    ++at_;
    node->b = expression();
    if (!takeWord(Word::to) && !takeWord(Word::into))
        expected("“to”");
    node->a = pattern();
    return finished(node);
}

Node *Parser::conditional()
{
    Node *node = make(Node::conditional);
    ++at_;
    node->a = expression();
    takeWord(Word::then);
    if (!endOfLine()) {
        node->b = statement();
        return finished(node);
    }
    endLine();
    node->b = body(&Parser::atEndOrElse);
    if (takeWord(Word::else_)) {
        if (isWord(Word::if_)) {
            // A chain of `else if` is one construct with one end, however long it is: no recursion.
            Node *last = node;
            do {
                Node *next = make(Node::conditional);
                ++at_;
                next->a = expression();
                takeWord(Word::then);
                endLine();
                next->b = body(&Parser::atEndOrElse);
                last->c = next;
                last = next;
            } while (isWord(Word::else_) && isWord(Word::if_, 1) && ++at_);
            if (takeWord(Word::else_)) {
                endLine();
                last->c = body(&Parser::atEnd);
            }
        } else {
            endLine();
            node->c = body(&Parser::atEnd);
        }
    }
    closeBlock("if", {Word::if_});
    return finished(node);
}

Node *Parser::loop()
{
    Node *node = make(Node::forever);
    ++at_;
    if (takeWord(Word::while_)) {
        node->kind = Node::whilst;
        node->a = expression();
    } else if (takeWord(Word::until)) {
        node->kind = Node::whilst;
        node->flag = true;
        node->a = expression();
    } else if (takeWord(Word::with)) {
        node->name = declaredName();
        if (takeWord(Word::in)) {
            node->kind = Node::iterating;
            node->a = expression();
        } else {
            node->kind = Node::counting;
            expectWord(Word::from);
            node->kids.push_back(expression());
            expectWord(Word::to);
            node->kids.push_back(expression());
            node->kids.push_back(takeWord(Word::by) ? expression() : nullptr);
        }
    } else if (!endOfLine()) {
        node->kind = Node::times;
        node->a = expression();
        takeWord(Word::times);
    }
    endLine();
    node->b = body(&Parser::atEnd);
    closeBlock("repeat", {Word::repeat});
    return finished(node);
}

Node *Parser::trial()
{
    Node *node = make(Node::trial);
    ++at_;
    endLine();
    node->a = body(&Parser::atEndOrOnError);
    node->kids.assign(5, nullptr);
    if (takeWord(Word::on)) {
        expectWord(Word::error);
        const auto variable = [&] {
            Node *pattern = make(Node::variable);
            pattern->name = declaredName();
            return pattern;
        };
        const auto isLabel = [&] {
            return isWord(Word::number) || isWord(Word::from) || isWord(Word::partial) || isWord(Word::to);
        };
        if (!endOfLine() && !isLabel())
            node->kids[0] = variable();
        while (!endOfLine()) {
            if (takeWord(Word::number)) {
                // A number itself: only errors of that number are caught.
                const bool given = peek().type == Token::number || isSymbol('-');
                node->kids[1] = given ? unary() : variable();
            } else if (takeWord(Word::from))
                node->kids[2] = variable();
            else if (takeWords(Word::partial, Word::result))
                node->kids[3] = variable();
            else if (takeWord(Word::to))
                node->kids[4] = variable();
            else
                expected("end of line");
        }
        endLine();
        node->b = body(&Parser::atEnd);
    }
    if (takeWords(Word::end, Word::error))
        return finished(node);
    closeBlock("try", {Word::try_});
    return finished(node);
}

Node *Parser::failure()
{
    Node *node = make(Node::failure);
    ++at_;
    node->kids.assign(5, nullptr);
    if (!endOfLine() && !isWord(Word::number) && !isWord(Word::from) && !isWord(Word::partial) &&
        !isWord(Word::to))
        node->kids[0] = expression();
    while (!endOfLine()) {
        if (takeWord(Word::number))
            node->kids[1] = expression();
        else if (takeWord(Word::from))
            node->kids[2] = expression();
        else if (takeWords(Word::partial, Word::result))
            node->kids[3] = expression();
        else if (takeWord(Word::to))
            node->kids[4] = expression();
        else
            expected("end of line");
    }
    return finished(node);
}

Node *Parser::consider()
{
    Node *node = make(Node::considering);
    const bool considering = peek().name == Word::considering;
    ++at_;
    const auto attributes = [&](uint32_t &bits) {
        for (;;) {
            if (takeWord(Word::case_))
                bits |= Considering::caseCounts;
            else if (takeWord(Word::diacriticals))
                bits |= Considering::diacriticals;
            else if (takeWord(Word::hyphens))
                bits |= Considering::hyphens;
            else if (takeWord(Word::punctuation))
                bits |= Considering::punctuation;
            else if (takeWords(Word::white, Word::space))
                bits |= Considering::whiteSpace;
            else if (takeWords(Word::numeric, Word::strings))
                bits |= Considering::numericStrings;
            else if (takeWords(Word::application, Word::responses))
                bits |= Considering::responses;
            else if (takeWord(Word::expansion))
                bits |= 0;
            else
                expected("consideration");
            if (!takeSymbol(',') && !takeWord(Word::and_))
                return;
            takeWord(Word::and_);
        }
    };
    attributes(considering ? node->code : node->clears);
    if (takeWord(Word::but)) {
        if (!takeWord(Word::ignoring) && !takeWord(Word::considering))
            expected("“ignoring” or “considering”");
        attributes(considering ? node->clears : node->code);
    }
    endLine();
    node->b = body(&Parser::atEnd);
    closeBlock(considering ? "considering" : "ignoring",
               {considering ? Name(Word::considering) : Name(Word::ignoring)});
    return finished(node);
}

Node *Parser::tell()
{
    Node *node = make(Node::tell);
    ++at_;
    node->a = expression();
    const bool application = node->a->kind == Node::specify && node->a->code == kSpecifyApplication;
    applicationsTold_ += application;
    if (takeWord(Word::to)) {
        node->b = statement();
    } else {
        endLine();
        node->b = body(&Parser::atEnd);
        closeBlock("tell", {Word::tell});
    }
    applicationsTold_ -= application;
    return finished(node);
}

Node *Parser::scriptObject()
{
    Node *node = make(Node::script);
    ++at_;
    if (!endOfLine())
        node->name = declaredName();
    endLine();
    node->a = body(&Parser::atEnd);
    closeBlock("script", {Word::script});
    return finished(node);
}

Node *Parser::handler()
{
    Node *node = make(Node::handler);
    ++at_;
    node->name = declaredName();
    if (takeSymbol('(')) {
        if (!takeSymbol(')')) {
            do
                node->kids.push_back(pattern());
            while (takeSymbol(','));
            expectSymbol(')');
        }
    } else if (!endOfLine()) {
        if (takeWord(Word::of) || takeWord(Word::in))
            node->b = pattern();
        else if (isSymbol('{') ||
                 (peek().type == Token::word && !parameterLabelAt(at_).words && !isWord(Word::given)))
            node->b = pattern();
        while (!endOfLine()) {
            if (takeWord(Word::given)) {
                do {
                    node->names.push_back(declaredName());
                    expectSymbol(':');
                    node->kids.push_back(pattern());
                } while (takeSymbol(','));
                continue;
            }
            const ParameterLabel label = parameterLabelAt(at_);
            if (!label.words)
                expected("parameter name");
            node->names.push_back(label.name);
            at_ += label.words;
            node->kids.push_back(pattern());
        }
        node->flag = true;  // labelled
    }
    endLine();
    node->a = body(&Parser::atEnd);
    if (!isWord(Word::end))
        expected("“end”");
    ++at_;
    if (!endOfLine() && (peek().type == Token::word || peek().type == Token::barred)) {
        if (peek().name != node->name)
            fail("Expected “" + heap_.names.spelling(node->name) + "” but found " + found(peek()) + ".",
                 peek().range);
        ++at_;
    }
    return finished(node);
}

}  // namespace tarvik::osa
