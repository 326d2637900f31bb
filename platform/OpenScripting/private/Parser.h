/// \file
/// Tokens into a tree.
#pragma once
#include "AST.h"
#include "Lexer.h"
#include "Vocabulary.h"

#include <set>
#include <string_view>

namespace tarvik::osa {

/// Throws ScriptError -2741 with its place.
Tree parse(std::string_view source, Heap &heap, const Vocabulary &vocabulary);

class Parser {
public:
    Parser(std::vector<Token> tokens, Heap &heap, const Vocabulary &vocabulary, Tree &tree);
    Node *script();

private:
    // ParserStatements.cpp
    void collectDeclared();
    Node *body(bool (Parser::*ends)() const);
    bool atEnd() const;
    bool atEndOrElse() const;
    bool atEndOrOnError() const;
    void statementInto(Node *block);
    Node *statement();
    Node *setStatement();
    Node *copyStatement();
    Node *pattern();
    Node *conditional();
    Node *loop();
    Node *trial();
    Node *failure();
    Node *consider();
    Node *tell();
    Node *handler();
    Node *scriptObject();
    Node *propertyDeclaration();
    Node *nameList(Node::Kind kind);
    void closeBlock(const char *what, std::initializer_list<Name> words);
    void endLine();
    Name declaredName();

    // ParserExpressions.cpp
    Node *expression();
    Node *disjunction();
    Node *conjunction();
    Node *negation();
    Node *equality();
    Node *coercion();
    Node *joining(Node *left = nullptr);
    Node *sum(Node *left = nullptr);
    Node *product(Node *left = nullptr);
    Node *power(Node *base = nullptr);
    Node *unary();
    Node *referring();
    Node *primary();
    Node *wordPrimary();
    Node *termPrimary(const Term &term);
    Node *elementSpecifier(const Term &term);
    Node *rangeOf(Node *node);
    Node *ordinalSpecifier(Specifier::Form form, Node *index);
    Node *operand();
    Node *arguments(Node *node);
    Node *labelled(Name name, Node *target);
    Node *commandCall(const Command &command, Range start);
    Node *rawTerm();
    Node *listLiteral();
    Node *countOf();
    int comparison();
    Node *assertion(Node *left, int op);
    const Term *term(bool indexed = false) const;
    const Term *elementTerm() const;
    bool startsOperand(size_t ahead = 0) const;
    bool isContainerWord() const;
    bool labelAhead(const char *label) const;
    void takeLabel(const char *label);
    /// A preposition that labels a parameter of a handler; no words: there is none.
    struct ParameterLabel {
        Name name;
        size_t words;
    };
    ParameterLabel parameterLabelAt(size_t at) const;
    uint32_t typeCode();

    // tokens
    const Token &peek(size_t ahead = 0) const { return tokens_[std::min(at_ + ahead, tokens_.size() - 1)]; }
    bool isWord(Name word, size_t ahead = 0) const
    {
        return peek(ahead).type == Token::word && peek(ahead).name == word;
    }
    bool isSymbol(char32_t symbol, size_t ahead = 0) const
    {
        return peek(ahead).type == Token::symbol && peek(ahead).symbolCode == symbol;
    }
    bool takeWord(Name word);
    bool takeSymbol(char32_t symbol);
    template <class... Words>
    bool takeWords(Words... words)
    {
        size_t ahead = 0;
        if (!((isWord(Name(words), ahead++)) && ...))
            return false;
        at_ += sizeof...(words);
        return true;
    }
    void expectWord(Name word);
    void expectSymbol(char32_t symbol);
    bool endOfLine() const { return peek().type == Token::newline || peek().type == Token::end; }
    void skipLines();
    [[noreturn]] void expected(const std::string &what);
    [[noreturn]] void fail(const std::string &message, Range range);
    std::string found(const Token &token) const;
    Node *make(Node::Kind kind) { return tree_.make(kind, peek().range); }
    Node *make(Node::Kind kind, Range range) { return tree_.make(kind, range); }
    Node *finished(Node *node)
    {
        if (at_ > 0)
            node->range.to = std::max(node->range.to, tokens_[at_ - 1].range.to);
        return node;
    }
    Node *literal(Value value, Range range)
    {
        Node *node = make(Node::literal, range);
        node->value = std::move(value);
        return node;
    }

    /// Nested constructs stop here, before the machine's own stack does.
    struct Level {
        explicit Level(Parser &parser);
        ~Level() { --parser.depth_; }
        Parser &parser;
    };

    std::vector<Token> tokens_;
    Heap &heap_;
    const Vocabulary &vocabulary_;
    Tree &tree_;
    size_t at_ = 0;
    size_t depth_ = 0;
    bool inIsParameter_ = false;  // `in` ends the expression: a command or a loop wants it
    bool ofIsParameter_ = false;
    size_t applicationsTold_ = 0;
    std::set<Name> declared_;  // names that the script gives to variables
    std::set<Name> labelledHandlers_;
};

}  // namespace tarvik::osa
