/// \file
/// A script as a tree.
#pragma once
#include "ScriptErrors.h"
#include "Values.h"

#include <deque>
#include <vector>

namespace tarvik::osa {

struct Command;

struct Node {
    enum Kind : uint8_t {
        // expressions
        literal,       // value
        variable,      // name
        list,          // kids
        record,        // names, kids
        negate,        // a
        binary,        // op, a, b
        conjunction,   // op: Word::and_ or or_; a, b
        negation,      // a
        coercion,      // a as b
        specifier,     // spec, a: the container (null: `it`), b, c: index or ends
        call,          // name, kids: arguments; a: the target (null: who is told); flag: the parent's handler
        labelledCall,  // name, b: direct parameter or null, names, kids: labels and arguments; a: the target
        command,       // command, a: direct parameter or null, codes, kids: parameters
        referenceTo,   // a
        it,
        me,
        result,
        specify,  // code: what for; a: of what (`application "x"`, `date "..."`)
        // statements
        block,        // kids
        expression,   // a
        set,          // a: target, b: value
        copy,         // the same
        conditional,  // a, b: then, c: else or null
        forever,      // b: body
        times,        // a, b
        whilst,       // a, b; flag: until
        counting,     // name, kids: from, to, by or null; b
        iterating,    // name, a: list, b
        leave,        // exit repeat
        giveBack,     // a or null
        trial,  // a: body, b: on error or null; kids: patterns (variables or null) of message, number, from, partial result, to
        failure,      // kids: message, number, from, partial result, to; or null each
        considering,  // bits to set: code, bits to clear: clears; b
        tell,         // a, b
        script,       // name, a: body
        property,     // name, a
        locals,
        globals,  // names
        handler,  // name, b: direct pattern or null, kids: patterns, names: labels (empty: positional), a: body
        log,      // a
        timeout,  // a, b
        nothing,
    };
    enum Operator : uint8_t {
        add,
        subtract,
        multiply,
        divide,
        quotient,
        modulo,
        power,
        join,
        equal,
        unequal,
        less,
        lessEqual,
        greater,
        greaterEqual,
        contains,
        containsNot,
        isIn,
        isNotIn,
        startsWith,
        endsWith
    };

    Kind kind = nothing;
    uint8_t op = 0;
    bool flag = false;
    Name name = 0;
    uint32_t code = 0, clears = 0;
    Range range;
    Value value;
    Specifier spec;
    const Command *verb = nullptr;
    Node *a = nullptr, *b = nullptr, *c = nullptr;
    std::vector<Node *> kids;
    std::vector<Name> names;
    std::vector<uint32_t> codes;
};

/// The nodes live as long as the tree.
class Tree {
public:
    Node *make(Node::Kind kind, Range range)
    {
        Node &node = nodes_.emplace_back();
        node.kind = kind;
        node.range = range;
        return &node;
    }
    Node *root = nullptr;

private:
    std::deque<Node> nodes_;
};

}  // namespace tarvik::osa
