/// \file
/// A compiled script: functions of instructions that work on registers.
///
/// An operand is a register of the function (0 ...) or a constant of it (-1, -2 ...). Code never comes from outside: it is always
/// compiled here, from source, so that the machine need not check it.
#pragma once
#include "AST.h"
#include "Values.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tarvik::osa {

// r: register, o: operand, k: number. Those that may branch are followed by a jump.
// clang-format off
#define TARVIK_OSA_INSTRUCTIONS(I) \
    I(move)          /* r <- o */ \
    I(moveRaw)       /* r <- o, even no value */ \
    I(none)          /* r <- no value */ \
    I(getSlot)       /* r <- slot c of the script b levels out */ \
    I(setSlot)       /* slot c of the script b levels out <- o */ \
    I(joinSlot)      /* slot c of the script b levels out & o, in place */ \
    I(getScriptSlot) /* r <- slot c of the script in register b */ \
    I(setScriptSlot) /* slot c of the script in register a <- o b */ \
    I(setParent)     /* parent of the script in register a <- o b */ \
    I(undefined)     /* fails: variable of the name in k (wide) */ \
    I(me)            /* r <- the script that runs; b 1: the one that the code stands in */ \
    I(add) I(subtract) I(multiply) I(divide) I(quotient) I(modulo) I(power) I(join) /* r <- o, o */ \
    I(equal) I(unequal) I(less) I(lessEqual) I(greater) I(greaterEqual) /* r <- o, o */ \
    I(contains) I(containsNot) I(isIn) I(isNotIn) I(startsWith) I(endsWith) \
    I(testEqual) I(testUnequal) I(testLess) I(testLessEqual) I(testGreater) I(testGreaterEqual) /* o a, o b: when true over the jump that follows */ \
    I(testTrue) I(testFalse) /* o a: the same */ \
    I(negate) I(negation) I(toBoolean) /* r <- o */ \
    I(coerce)        /* r <- o as o */ \
    I(newList)       /* r <- c registers from b */ \
    I(newRecord)     /* r <- registers from b, labelled by site c */ \
    I(getItem)       /* r <- item c of b */ \
    I(get)           /* r <- the place of site c in o b */ \
    I(refer)         /* r <- a reference to it */ \
    I(set)           /* the place of site c in o b <- o a */ \
    I(call)          /* r <- handler of site c of the script that runs; arguments from register b */ \
    I(send)          /* r <- the same of the object in register b; arguments behind it */ \
    I(callValue)     /* r <- the handler in register b; arguments behind it */ \
    I(command)       /* r <- command of site c; target, direct parameter and parameters from register b */ \
    I(specify)       /* r <- application, file ... (site c) of o b */ \
    I(jump)          /* wide: to that instruction */ \
    I(loop)          /* the same, backwards */ \
    I(countPrepare)  /* registers from a: start, limit, step */ \
    I(countNext)     /* the next number into register b and the jump that follows, or over it */ \
    I(eachPrepare)   /* registers from a: list, position, end */ \
    I(eachNext)      /* the next item into register b and the jump that follows, or over it */ \
    I(beginTry)      /* keeps what is considered in register a */ \
    I(consider)      /* keeps it in register a; b: considered, c: ignored from here on */ \
    I(limitTime)     /* keeps it in register a; applications have o b seconds from here on */ \
    I(restore)       /* all that as kept in register a */ \
    I(fail)          /* registers from a: message, number, from, partial result, to */ \
    I(copy)          /* r <- o, as deep as it goes */ \
    I(giveBack) I(giveBackRaw) I(giveNothing) /* o a */ \
    I(newScript)     /* r <- a script of prototype k (wide) */ \
    I(newHandler)    /* r <- function k (wide) of the script that stands here */ \
    I(log)           /* o a */
// clang-format on

enum class Op : uint16_t {
#define TARVIK_OSA_INSTRUCTION(name) name,
    TARVIK_OSA_INSTRUCTIONS(TARVIK_OSA_INSTRUCTION)
#undef TARVIK_OSA_INSTRUCTION
};

struct Instruction {
    Op op;
    int16_t a;
    union {
        struct {
            int16_t b, c;
        };
        int32_t wide;
    };
};
static_assert(sizeof(Instruction) == 8);

/// What an instruction needs beside its operands.
struct Site {
    Specifier spec;
    int16_t from = 0, to = 0;  // operands of a specifier
    Name name = 0;             // of the handler
    uint16_t count = 0;        // positional arguments
    bool labelled = false;
    bool continues = false;       // the handler that the script's parent has
    bool hasDirect = false;       // a labelled call's first argument is the direct one
    std::vector<Name> labels;     // of a record or a labelled call
    std::vector<uint32_t> codes;  // of a command's parameters
    const Command *command = nullptr;
    uint32_t eventClass = 0, eventID = 0, what = 0;
    // the latest answer to `call`
    mutable const Prototype *knownFor = nullptr;
    mutable const Function *known = nullptr;
};

struct TryRange {
    uint32_t from, to, handler;
    int16_t registers;  // message, number, from, partial result, to; then what was considered
};

struct Function {
    Name name = 0;
    std::vector<Instruction> code;
    std::vector<Range> ranges;     // one for each instruction
    std::vector<Value> constants;  // the last one is operand -1: see Compiler
    std::vector<Site> sites;
    std::vector<TryRange> tries;  // inner ones first
    std::vector<Name> variables;  // of the first registers
    std::vector<Name> labels;     // of labelled parameters
    uint16_t parameters = 0;      // positional; labelled: direct one and labels
    bool labelled = false, hasDirect = false;
    uint16_t registers = 0;
    const Prototype *prototype = nullptr;

    const Value *operands() const { return constants.data() + constants.size(); }
};

/// A script object's plan.
struct Prototype {
    struct Program *program = nullptr;
    Name name = 0;
    std::vector<Name> slots;  // names of properties and globals; 0: hidden
    std::map<Name, const Function *> handlers;
    const Prototype *outer = nullptr;

    int slotOf(Name name) const
    {
        for (size_t i = slots.size(); i > 0; --i) {
            if (slots[i - 1] == name)
                return int(i - 1);
        }
        return -1;
    }
};

struct Program {
    std::string source;
    std::vector<std::unique_ptr<Function>> functions;
    std::vector<std::unique_ptr<Prototype>> prototypes;
    const Prototype *root = nullptr;
    const Function *initialise = nullptr;  // fills the slots of a new root
    Program *before = nullptr;             // the one whose context this one continues

    void retain() { ++references_; }
    void release()
    {
        if (--references_ == 0)
            delete this;
    }

private:
    ~Program()
    {
        if (before)
            before->release();
    }
    uint32_t references_ = 1;
};

/// Throws ScriptError with its place.
/// `context`: a root whose properties, globals and handlers the new script continues. The caller owns the result (release).
class Vocabulary;
Program *compile(const Tree &tree, std::string_view source, Heap &heap, Program *context,
                 bool keepsVariables);

}  // namespace tarvik::osa
