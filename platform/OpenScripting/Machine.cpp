#include "private/Machine.h"

#include "private/FileAccess.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

namespace tarvik::osa {

namespace {

constexpr size_t kStackValues = 1 << 19;
constexpr size_t kDeepestCall = 10000;  // frames
constexpr int kDeepestNesting = 40;  // machines within machines: `run script` of a script that runs a script
constexpr int32_t kTicks = 2000;     // between two polls of the host
constexpr int64_t kLargestInteger = 536870911;

bool fits(int64_t number) { return number >= -kLargestInteger - 1 && number <= kLargestInteger; }

}  // namespace

Machine::Machine(Heap &heap, Host &host, const Vocabulary &vocabulary)
    // Zeroed memory is registers without values; pages are taken when a script gets there.
    : heap(heap), host(host), vocabulary(vocabulary), random(std::random_device{}()),
      stack_(static_cast<Value *>(std::calloc(kStackValues, sizeof(Value)))), ticks_(kTicks)
{
    if (!stack_)
        throw std::bad_alloc();
    delimiters = heap.emptyText();
    frames_.reserve(64);
}

Machine::~Machine() { std::free(static_cast<void *>(stack_)); }

Value Machine::instantiate(Program *program)
{
    Value root = heap.script(program->root);
    execute(*program->initialise, root, root, {});
    return root;
}

void Machine::continueContext(Value &root, Program *program)
{
    ScriptObject *script = root.script();
    program->retain();
    script->prototype->program->release();
    script->prototype = program->root;
    script->slots.resize(program->root->slots.size());
    execute(*program->initialise, root, root, {});
}

std::pair<const Function *, ScriptObject *> Machine::findHandler(ScriptObject *script, Name name) const
{
    for (int steps = 0; script && steps < 1000; ++steps) {
        const auto known = script->prototype->handlers.find(name);
        if (known != script->prototype->handlers.end())
            return {known->second, script};
        const Value &next = script->parent ? script->parent : script->outer;
        // A script answers `run` itself; what it stands in does not run in its place.
        script = next.is(Kind::script) && !(name == Word::run && !script->parent) ? next.script() : nullptr;
    }
    return {nullptr, nullptr};
}

Value Machine::call(const Value &script, Name handler, std::vector<Value> arguments)
{
    const auto [function, owner] = findHandler(script.script(), handler);
    if (!function)
        raise(error::notUnderstood,
              "«script» doesn’t understand the “" + heap.names.spelling(handler) + "” message.");
    // `on run` may leave its parameters out or have them where none are given.
    arguments.resize(function->parameters);
    if (handler == Word::run && arguments.size() == 1 && !arguments[0])
        arguments[0] = heap.list();
    return execute(*function, Value::retain(owner), script, std::move(arguments));
}

Value Machine::execute(const Function &function, const Value &script, const Value &me,
                       std::vector<Value> arguments)
{
    if (nesting_ >= kDeepestNesting)
        raise(error::stackOverflow, "Stack overflow.");
    ++nesting_;
    const size_t bottom = frames_.size();
    const int64_t before = held();
    Value result;
    Value *registers =
        frames_.empty() ? stack_ : frames_.back().registers + frames_.back().function->registers;
    try {
        for (size_t i = 0; i < arguments.size(); ++i)
            registers[i] = std::move(arguments[i]);
        pushFrame(function, script, me, registers, &result);
        for (;;) {
            try {
                interpret(bottom);
                break;
            } catch (ScriptError &error) {
                if (!unwind(error, bottom))
                    throw;
            } catch (const std::bad_alloc &) {
                ScriptError error{error::outOfMemory, "Out of memory."};
                if (!unwind(error, bottom))
                    throw error;
            }
        }
    } catch (...) {
        while (frames_.size() > bottom)
            popFrame();
        hold(before);
        --nesting_;
        throw;
    }
    hold(before);
    --nesting_;
    return result;
}

void Machine::pushFrame(const Function &function, const Value &script, const Value &me, Value *registers,
                        Value *result)
{
    if (frames_.size() >= kDeepestCall || registers + function.registers + 8 > stack_ + kStackValues)
        raise(error::stackOverflow, "Stack overflow.");
    for (int i = function.parameters; i < function.registers; ++i)
        registers[i].clear();
    frames_.push_back(
        {&function, function.code.data(), registers, script, me, result, considering, timeLimit});
}

void Machine::popFrame()
{
    Frame &frame = frames_.back();
    for (int i = 0; i < frame.function->registers; ++i)
        frame.registers[i].clear();
    considering = frame.considering;
    timeLimit = frame.timeLimit;
    frames_.pop_back();
}

bool Machine::unwind(ScriptError &error, size_t bottom)
{
    while (frames_.size() > bottom) {
        Frame &frame = frames_.back();
        const Function &function = *frame.function;
        const size_t at = size_t(frame.pc - function.code.data());
        if (!error.located && at < function.ranges.size()) {
            error.range = function.ranges[at];
            error.located = true;
        }
        if (!error.stops) {
            for (const TryRange &range : function.tries) {
                if (at < range.from || at >= range.to)
                    continue;
                Value *registers = frame.registers + range.registers;
                registers[0] = heap.text(error.message);
                registers[1] = Value::of(int64_t(error.number));
                registers[2] = error.offending;
                registers[3] = error.partial;
                registers[4] = error.wanted;
                hold(registers[5].integer());
                frame.pc = function.code.data() + range.handler;
                return true;
            }
        }
        popFrame();
    }
    return false;
}

void Machine::poll()
{
    ticks_ = kTicks;
    if (const int32_t number = host.poll())
        stop(number);
}

void Machine::stop(int32_t number)
{
    ScriptError stop{number, messageFor(number)};
    stop.stops = true;
    throw stop;
}

void Machine::undefinedOperand(const Frame &frame, int operand)
{
    const auto &variables = frame.function->variables;
    if (operand >= 0 && size_t(operand) < variables.size() && variables[size_t(operand)])
        raise(error::undefined,
              "The variable " + displayName(variables[size_t(operand)]) + " is not defined.");
    raise(error::noResult, "No result was returned from some part of this expression.");
}

inline const Value &Machine::defined(const Frame &frame, int operand, const Value &value)
{
    if (value.is(Kind::none)) [[unlikely]]
        undefinedOperand(frame, operand);
    return value;
}

ScriptObject *Machine::outward(const Frame &frame, int levels) const
{
    ScriptObject *script = frame.script.script();
    while (levels-- > 0)
        script = script->outer.script();
    return script;
}

/// Puts the arguments where the function's parameters are.
void Machine::matchArguments(const Site &site, const Function &function, Value *arguments)
{
    const auto mismatch = [&]() {
        std::string given = "{", wanted = "{";
        for (size_t i = 0; i < site.count; ++i)
            given += (i ? ", " : "") + display(arguments[i]);
        for (size_t i = 0; i < function.parameters; ++i)
            wanted += (i ? ", " : "") + (i < function.variables.size() && function.variables[i]
                                             ? displayName(function.variables[i])
                                             : std::string("{}"));
        raise(error::badParameters, given + "} doesn’t match the parameters " + wanted + "} for " +
                                        heap.names.spelling(function.name) + ".");
    };
    if (!site.labelled && !function.labelled) {
        if (site.count != function.parameters)
            mismatch();
        return;
    }
    if (!site.labelled) {  // positional ones for a handler with one direct parameter
        if (site.count != function.parameters || !function.labels.empty())
            mismatch();
        return;
    }
    if (!function.labelled) {
        if (site.count != function.parameters || !site.labels.empty())
            mismatch();
        return;
    }
    std::vector<Value> given(std::make_move_iterator(arguments),
                             std::make_move_iterator(arguments + site.count));
    for (size_t i = 0; i < function.parameters; ++i)
        arguments[i].clear();
    size_t next = 0;
    if (function.hasDirect) {
        if (!site.hasDirect)
            raise(error::wrongData,
                  "The direct parameter is missing for " + heap.names.spelling(function.name) + ".");
        arguments[next++] = given[0];
    }
    for (const Name label : function.labels) {
        bool found = false;
        for (size_t i = 0; i < site.labels.size() && !found; ++i) {
            const bool same = site.labels[i] == label ||
                              (label == Word::through && site.labels[i] == Word::thru) ||
                              (label == Word::thru && site.labels[i] == Word::through);
            if (same) {
                arguments[next] = given[i + site.hasDirect];
                found = true;
            }
        }
        if (!found)
            raise(error::wrongData, "The " + heap.names.spelling(label) + " parameter is missing for " +
                                        heap.names.spelling(function.name) + ".");
        ++next;
    }
}

void Machine::enter(const Site &site, const Function &function, const Value &owner, const Value &me,
                    Value *arguments, Value *result)
{
    if (arguments + std::max<size_t>(site.count, function.parameters) + 8 > stack_ + kStackValues)
        raise(error::stackOverflow, "Stack overflow.");
    if (site.count != function.parameters || site.labelled || function.labelled)
        matchArguments(site, function, arguments);
    pushFrame(function, owner, me, arguments, result);
}

void Machine::callSite(Frame &frame, Op op, const Instruction &instruction)
{
    const Site &site = frame.function->sites[size_t(instruction.c)];
    Value *base = frame.registers + instruction.b;
    Value *result = frame.registers + instruction.a;
    if (op == Op::callValue) {
        Value held = contentsOf(base[0]);
        if (held.is(Kind::handler)) {
            const Value owner = held.handler()->owner;
            return enter(site, *held.handler()->function, owner, owner, base + 1, result);
        }
        if (held.is(Kind::script) && responds(held, Word::run) && site.count == 0) {
            const auto [function, owner] = findHandler(held.script(), Word::run);
            return enter(site, *function, Value::retain(owner), held, base + 1, result);
        }
        raise(error::notUnderstood,
              display(held) + " doesn’t understand the “" + heap.names.spelling(site.name) + "” message.",
              held);
    }
    if (op == Op::send) {
        Value target = contentsOf(base[0]);
        if (target.is(Kind::script)) {
            const auto [function, owner] = findHandler(target.script(), site.name);
            if (function)
                return enter(site, *function, Value::retain(owner), target, base + 1, result);
            if (const int slot = target.script()->prototype->slotOf(site.name);
                slot >= 0 && target.script()->slots[size_t(slot)].is(Kind::handler)) {
                const Value held = target.script()->slots[size_t(slot)];
                return enter(site, *held.handler()->function, held.handler()->owner, target, base + 1,
                             result);
            }
        } else if (target.is(Kind::record)) {
            if (const Value *held = target.record()->find(site.name); held && held->is(Kind::handler)) {
                const Value handler = *held;
                return enter(site, *handler.handler()->function, handler.handler()->owner,
                             handler.handler()->owner, base + 1, result);
            }
        }
        if (target.is(Kind::application) && !site.labelled) {
            const std::vector<Value> arguments(base + 1, base + 1 + site.count);
            const std::string name = target.application()->name;
            const Name handler = site.name;
            const int16_t to = instruction.a;
            Value answer = host.callApplication(*this, name, handler, arguments);
            Frame &now = frames_.back();
            now.registers[to] = std::move(answer);
            ++now.pc;
            return;
        }
        const std::string who = target.is(Kind::script) ? "«script»" : display(target);
        raise(error::notUnderstood,
              who + " doesn’t understand the “" + heap.names.spelling(site.name) + "” message.", target);
    }
    if (site.continues) {
        const Value &parent = frame.script.script()->parent;
        const auto inherited = parent.is(Kind::script) ? findHandler(parent.script(), site.name)
                                                       : std::pair<const Function *, ScriptObject *>();
        if (!inherited.first)
            raise(error::notUnderstood, "Can’t continue " + heap.names.spelling(site.name) + ".", frame.me);
        const Value me = frame.me;
        return enter(site, *inherited.first, Value::retain(inherited.second), me, base, result);
    }
    const auto [function, owner] = findHandler(frame.me.script(), site.name);
    const Function *found = function;
    Value holder = owner ? Value::retain(owner) : Value();
    if (!found) {  // not of the script that runs: of the one that the code stands in
        const auto lexical = findHandler(frame.script.script(), site.name);
        if (!lexical.first)
            raise(error::notUnderstood,
                  "«script» doesn’t understand the “" + heap.names.spelling(site.name) + "” message.",
                  frame.me);
        found = lexical.first;
        holder = Value::retain(lexical.second);
    } else if (owner == frame.me.script()) {
        site.knownFor = frame.me.script()->prototype;
        site.known = found;
    }
    const Value me = frame.me;
    enter(site, *found, holder, me, base, result);
}

Value Machine::specified(uint32_t what, const Value &of)
{
    switch (what) {
    case kSpecifyApplication: return heap.application(textOf(of));
    case kSpecifyPOSIXFile: return heap.file(false, textOf(of));
    case kSpecifyAlias:
    case kSpecifyFile: return coerced(of, what == kSpecifyAlias ? type::alias : type::file);
    case kSpecifyDate: {
        const Value text = contentsOf(of);
        if (text.is(Kind::date))
            return text;
        const auto seconds = parseDate(textOf(text));
        if (!seconds)
            raise(-30720, "Invalid date and time " + display(asText(text)) + ".");
        return heap.date(*seconds);
    }
    default: return of;
    }
}

Value Machine::refer(const Site &site, const Value &container, const Value &from, const Value &to)
{
    Specifier spec = site.spec;
    Value reference = heap.reference(spec, container);
    reference.reference()->from = from;
    reference.reference()->to = to;
    return reference;
}

// The loop. A computed goto leaves a block without destroying what was made in it: values live in blocks of their own, which end
// before NEXT and STAY. `pc` leads to the instruction that runs; it is kept in the frame before anything that may fail or call.
Value Machine::interpret(size_t bottom)
{
#define OPERAND(number) ((number) >= 0 ? registers[number] : constants[number])
#define OPERATION(name)                                                                                      \
    name:
#define NEXT                                                                                                 \
    do {                                                                                                     \
        ++pc;                                                                                                \
        goto *kLabels[size_t(pc->op)];                                                                       \
    } while (0)
#define STAY                                                                                                 \
    do {                                                                                                     \
        goto *kLabels[size_t(pc->op)];                                                                       \
    } while (0)
#define MAY_FAIL frame->pc = pc
#define TICK                                                                                                 \
    do {                                                                                                     \
        if (--ticks_ <= 0) [[unlikely]] {                                                                    \
            MAY_FAIL;                                                                                        \
            poll();                                                                                          \
        }                                                                                                    \
    } while (0)
#define ENTER_FRAME                                                                                          \
    do {                                                                                                     \
        frame = &frames_.back();                                                                             \
        pc = frame->pc;                                                                                      \
        registers = frame->registers;                                                                        \
        constants = frame->function->operands();                                                             \
    } while (0)

    static const void *const kLabels[] = {
#define TARVIK_OSA_INSTRUCTION(name) &&op_##name,
        TARVIK_OSA_INSTRUCTIONS(TARVIK_OSA_INSTRUCTION)
#undef TARVIK_OSA_INSTRUCTION
    };

    Frame *frame;
    const Instruction *pc;
    Value *registers;
    const Value *constants;
    ENTER_FRAME;
    STAY;

    OPERATION(op_move)
    {
        const Value &from = OPERAND(pc->b);
        if (from.is(Kind::none)) [[unlikely]] {
            MAY_FAIL;
            undefinedOperand(*frame, pc->b);
        }
        registers[pc->a] = from;
        NEXT;
    }
    OPERATION(op_moveRaw)
    {
        registers[pc->a] = OPERAND(pc->b);
        NEXT;
    }
    OPERATION(op_none)
    {
        registers[pc->a].clear();
        NEXT;
    }
    OPERATION(op_getSlot)
    {
        const ScriptObject *script = pc->b == 0 ? frame->script.script() : outward(*frame, pc->b);
        const Value &slot = script->slots[size_t(pc->c)];
        if (slot.is(Kind::none)) [[unlikely]] {
            MAY_FAIL;
            raise(error::undefined, "The variable " + displayName(script->prototype->slots[size_t(pc->c)]) +
                                        " is not defined.");
        }
        registers[pc->a] = slot;
        NEXT;
    }
    OPERATION(op_setSlot)
    {
        MAY_FAIL;
        ScriptObject *script = pc->b == 0 ? frame->script.script() : outward(*frame, pc->b);
        script->slots[size_t(pc->c)] = defined(*frame, pc->a, OPERAND(pc->a));
        NEXT;
    }
    OPERATION(op_joinSlot)
    {
        MAY_FAIL;
        const Value &back = defined(*frame, pc->a, OPERAND(pc->a));
        ScriptObject *script = outward(*frame, pc->b);
        Value &front = script->slots[size_t(pc->c)];
        if (front.is(Kind::none))
            raise(error::undefined, "The variable " + displayName(script->prototype->slots[size_t(pc->c)]) +
                                        " is not defined.");
        if (front.is(Kind::text) && back.is(Kind::text))
            append(front, back);
        else
            joinInto(front, back);
        NEXT;
    }
    OPERATION(op_getScriptSlot)
    {
        MAY_FAIL;
        const Value &slot = registers[pc->b].script()->slots[size_t(pc->c)];
        if (slot.is(Kind::none))
            raise(error::undefined,
                  "The variable " + displayName(registers[pc->b].script()->prototype->slots[size_t(pc->c)]) +
                      " is not defined.");
        registers[pc->a] = slot;
        NEXT;
    }
    OPERATION(op_setScriptSlot)
    {
        registers[pc->a].script()->slots[size_t(pc->c)] = OPERAND(pc->b);
        NEXT;
    }
    OPERATION(op_setParent)
    {
        MAY_FAIL;
        const Value &parent = defined(*frame, pc->b, OPERAND(pc->b));
        if (parent.is(Kind::script)) {
            for (const ScriptObject *one = parent.script(); one;
                 one = one->parent.is(Kind::script) ? one->parent.script() : nullptr) {
                if (one == registers[pc->a].script())
                    raise(error::cantAssign, "Can’t set parent to a script that inherits from this one.");
            }
        }
        registers[pc->a].script()->parent = parent;
        NEXT;
    }
    OPERATION(op_undefined)
    {
        MAY_FAIL;
        raise(error::undefined,
              "The variable " + displayName(heap.names.of(utf8(constants[pc->wide]))) + " is not defined.");
    }
    OPERATION(op_me)
    {
        registers[pc->a] = pc->b ? frame->script : frame->me;
        NEXT;
    }

#define ARITHMETIC(name, sign)                                                                               \
    OPERATION(op_##name)                                                                                     \
    {                                                                                                        \
        const Value &left = OPERAND(pc->b), &right = OPERAND(pc->c);                                         \
        if (left.is(Kind::integer) && right.is(Kind::integer)) [[likely]] {                                  \
            const int64_t number = left.integer() sign right.integer();                                      \
            if (fits(number)) [[likely]]                                                                     \
                registers[pc->a].put(number);                                                                \
            else                                                                                             \
                registers[pc->a].put(double(number));                                                        \
            NEXT;                                                                                            \
        }                                                                                                    \
        if (left.isNumber() && right.isNumber()) {                                                           \
            const double number = left.number() sign right.number();                                         \
            if (std::isfinite(number)) [[likely]] {                                                          \
                registers[pc->a].put(number);                                                                \
                NEXT;                                                                                        \
            }                                                                                                \
        }                                                                                                    \
        goto slowArithmetic;                                                                                 \
    }
    ARITHMETIC(add, +)
    ARITHMETIC(subtract, -)
    ARITHMETIC(multiply, *)
    OPERATION(op_divide)
    {
        const Value &left = OPERAND(pc->b), &right = OPERAND(pc->c);
        if (left.isNumber() && right.isNumber() && right.number() != 0) {
            const double number = left.number() / right.number();
            if (std::isfinite(number)) [[likely]] {
                registers[pc->a].put(number);
                NEXT;
            }
        }
        goto slowArithmetic;
    }
    OPERATION(op_quotient)
    {
        const Value &left = OPERAND(pc->b), &right = OPERAND(pc->c);
        if (left.is(Kind::integer) && right.is(Kind::integer) && right.integer() > 0) [[likely]] {
            registers[pc->a].put(int64_t(int32_t(left.integer()) / int32_t(right.integer())));
            NEXT;
        }
        goto slowArithmetic;
    }
    OPERATION(op_modulo)
    {
        const Value &left = OPERAND(pc->b), &right = OPERAND(pc->c);
        if (left.is(Kind::integer) && right.is(Kind::integer) && right.integer() > 0) [[likely]] {
            registers[pc->a].put(int64_t(int32_t(left.integer()) % int32_t(right.integer())));
            NEXT;
        }
        goto slowArithmetic;
    }
    OPERATION(op_power)
slowArithmetic : {
    MAY_FAIL;
    const Value &left = defined(*frame, pc->b, OPERAND(pc->b)),
                &right = defined(*frame, pc->c, OPERAND(pc->c));
    {
        Value result;
        arithmetic(pc->op, result, left, right);
        registers[pc->a] = std::move(result);
    }
    NEXT;
}
    OPERATION(op_join)
    {
        MAY_FAIL;
        const Value &back = defined(*frame, pc->c, OPERAND(pc->c));
        Value &front = const_cast<Value &>(defined(*frame, pc->b, OPERAND(pc->b)));
        if (front.is(Kind::text) && back.is(Kind::text)) [[likely]] {
            if (pc->a == pc->b)
                append(front, back);
            else
                registers[pc->a] = concatenated(front, back);
        } else if (pc->a == pc->b) {
            joinInto(front, back);
        } else {
            registers[pc->a] = joined(front, back);
        }
        NEXT;
    }

#define COMPARISON(name, sign, slow)                                                                         \
    OPERATION(op_##name)                                                                                     \
    {                                                                                                        \
        const Value &left = OPERAND(pc->b), &right = OPERAND(pc->c);                                         \
        if (left.is(Kind::integer) && right.is(Kind::integer)) [[likely]] {                                  \
            registers[pc->a].put(left.integer() sign right.integer());                                       \
            NEXT;                                                                                            \
        }                                                                                                    \
        MAY_FAIL;                                                                                            \
        defined(*frame, pc->b, left);                                                                        \
        defined(*frame, pc->c, right);                                                                       \
        const bool truth = slow;                                                                             \
        registers[pc->a].put(truth);                                                                         \
        NEXT;                                                                                                \
    }
    COMPARISON(equal, ==, equal(left, right))
    COMPARISON(unequal, !=, !equal(left, right))
    COMPARISON(less, <, order(left, right) < 0)
    COMPARISON(lessEqual, <=, order(left, right) <= 0)
    COMPARISON(greater, >, order(left, right) > 0)
    COMPARISON(greaterEqual, >=, order(left, right) >= 0)
    COMPARISON(contains, !=, contains(left, right))
    COMPARISON(containsNot, !=, !contains(left, right))
    COMPARISON(isIn, !=, contains(right, left))
    COMPARISON(isNotIn, !=, !contains(right, left))
    COMPARISON(startsWith, !=, startsWith(left, right))
    COMPARISON(endsWith, !=, endsWith(left, right))

// True: over the jump that follows. False: the jump itself.
#define BRANCH(condition)                                                                                    \
    do {                                                                                                     \
        if (condition)                                                                                       \
            pc += 2;                                                                                         \
        else                                                                                                 \
            pc = frame->function->code.data() + pc[1].wide;                                                  \
        STAY;                                                                                                \
    } while (0)
#define TEST(name, sign, slow)                                                                               \
    OPERATION(op_##name)                                                                                     \
    {                                                                                                        \
        const Value &left = OPERAND(pc->a), &right = OPERAND(pc->b);                                         \
        if (left.is(Kind::integer) && right.is(Kind::integer)) [[likely]]                                    \
            BRANCH(left.integer() sign right.integer());                                                     \
        MAY_FAIL;                                                                                            \
        defined(*frame, pc->a, left);                                                                        \
        defined(*frame, pc->b, right);                                                                       \
        BRANCH(slow);                                                                                        \
    }
    TEST(testEqual, ==, equal(left, right))
    TEST(testUnequal, !=, !equal(left, right))
    TEST(testLess, <, order(left, right) < 0)
    TEST(testLessEqual, <=, order(left, right) <= 0)
    TEST(testGreater, >, order(left, right) > 0)
    TEST(testGreaterEqual, >=, order(left, right) >= 0)
    OPERATION(op_testTrue)
    {
        const Value &value = OPERAND(pc->a);
        if (value.is(Kind::boolean)) [[likely]]
            BRANCH(value.boolean());
        MAY_FAIL;
        BRANCH(truth(defined(*frame, pc->a, value)));
    }
    OPERATION(op_testFalse)
    {
        const Value &value = OPERAND(pc->a);
        if (value.is(Kind::boolean)) [[likely]]
            BRANCH(!value.boolean());
        MAY_FAIL;
        BRANCH(!truth(defined(*frame, pc->a, value)));
    }
    OPERATION(op_negate)
    {
        MAY_FAIL;
        {
            const Value value = asNumber(defined(*frame, pc->b, OPERAND(pc->b)));
            if (value.is(Kind::integer))
                registers[pc->a] = fits(-value.integer()) ? Value::of(-value.integer())
                                                          : Value::of(-double(value.integer()));
            else
                registers[pc->a] = Value::of(-value.real());
        }
        NEXT;
    }
    OPERATION(op_negation)
    {
        MAY_FAIL;
        registers[pc->a] = Value::of(!truth(defined(*frame, pc->b, OPERAND(pc->b))));
        NEXT;
    }
    OPERATION(op_toBoolean)
    {
        MAY_FAIL;
        registers[pc->a] = Value::of(truth(defined(*frame, pc->b, OPERAND(pc->b))));
        NEXT;
    }
    OPERATION(op_coerce)
    {
        MAY_FAIL;
        {
            const Value &value = defined(*frame, pc->b, OPERAND(pc->b));
            const Value wanted = contentsOf(defined(*frame, pc->c, OPERAND(pc->c)));
            if (!wanted.is(Kind::type) && !wanted.is(Kind::constant) && !wanted.is(Kind::list))
                cantMake(wanted, "class");
            registers[pc->a] = coerced(value, wanted.is(Kind::list) ? type::list : wanted.code());
        }
        NEXT;
    }
    OPERATION(op_newList)
    {
        MAY_FAIL;
        {
            std::vector<Value> items;
            items.reserve(size_t(pc->c));
            for (int i = 0; i < pc->c; ++i)
                items.push_back(std::move(registers[pc->b + i]));
            registers[pc->a] = heap.list(std::move(items));
        }
        NEXT;
    }
    OPERATION(op_newRecord)
    {
        MAY_FAIL;
        const Site &site = frame->function->sites[size_t(pc->c)];
        {
            Value record = heap.record();
            for (size_t i = 0; i < site.labels.size(); ++i)
                record.record()->set(site.labels[i], std::move(registers[size_t(pc->b) + i]));
            registers[pc->a] = std::move(record);
        }
        NEXT;
    }
    OPERATION(op_getItem)
    {
        const Value &container = OPERAND(pc->b), &index = OPERAND(pc->c);
        if (container.is(Kind::list) && index.is(Kind::integer)) [[likely]] {
            const auto &items = container.list()->items;
            const uint64_t at = uint64_t(index.integer()) - 1;
            if (at < items.size()) [[likely]] {
                registers[pc->a] = items
                    [at];  // copied before the register, which may hold the list's last reference, is written
                NEXT;
            }
        }
        MAY_FAIL;
        registers[pc->a] = item(defined(*frame, pc->b, container), defined(*frame, pc->c, index));
        NEXT;
    }
    OPERATION(op_get)
    {
        MAY_FAIL;
        const Site &site = frame->function->sites[size_t(pc->c)];
        if (site.spec.code == type::character && site.spec.form == Specifier::index &&
            OPERAND(pc->b).is(Kind::text)) {
            const Value &text = OPERAND(pc->b), &index = OPERAND(site.from);
            if (index.is(Kind::integer) && uint64_t(index.integer()) - 1 < text.text()->length) [[likely]] {
                registers[pc->a] = part(text, size_t(index.integer()) - 1, 1);
                NEXT;
            }
        }
        static const Value kNothing;
        const bool from = site.spec.form == Specifier::index || site.spec.form == Specifier::range ||
                          site.spec.form == Specifier::named || site.spec.form == Specifier::id;
        const Value &container = defined(*frame, pc->b, OPERAND(pc->b));
        const Value &first = from ? defined(*frame, site.from, OPERAND(site.from)) : kNothing;
        const Value &second =
            site.spec.form == Specifier::range ? defined(*frame, site.to, OPERAND(site.to)) : kNothing;
        registers[pc->a] = get(site.spec, container, first, second);
        NEXT;
    }
    OPERATION(op_refer)
    {
        MAY_FAIL;
        const Site &site = frame->function->sites[size_t(pc->c)];
        const bool from = site.spec.form == Specifier::index || site.spec.form == Specifier::range ||
                          site.spec.form == Specifier::named || site.spec.form == Specifier::id;
        {
            const Value &container = defined(*frame, pc->b, OPERAND(pc->b));
            const Value first = from ? defined(*frame, site.from, OPERAND(site.from)) : Value();
            const Value second =
                site.spec.form == Specifier::range ? defined(*frame, site.to, OPERAND(site.to)) : Value();
            registers[pc->a] = refer(site, container, first, second);
        }
        NEXT;
    }
    OPERATION(op_set)
    {
        MAY_FAIL;
        const Site &site = frame->function->sites[size_t(pc->c)];
        const Value &container = defined(*frame, pc->b, OPERAND(pc->b)),
                    &value = defined(*frame, pc->a, OPERAND(pc->a));
        if (container.is(Kind::list)) {
            auto &items = container.list()->items;
            if (site.spec.form == Specifier::end && !value.is(Kind::reference)) {
                if (items.size() == items.capacity())
                    heap.grow(container.list(), items.size() * 2);
                items.push_back(value);
                NEXT;
            }
            if (site.spec.form == Specifier::index && site.spec.code == type::item &&
                OPERAND(site.from).is(Kind::integer)) {
                const uint64_t at = uint64_t(OPERAND(site.from).integer()) - 1;
                if (at < items.size()) {
                    items[at] = value;
                    NEXT;
                }
            }
        }
        static const Value kNothing;
        const bool from = site.spec.form == Specifier::index || site.spec.form == Specifier::range ||
                          site.spec.form == Specifier::named || site.spec.form == Specifier::id;
        const Value &first = from ? defined(*frame, site.from, OPERAND(site.from)) : kNothing;
        const Value &second =
            site.spec.form == Specifier::range ? defined(*frame, site.to, OPERAND(site.to)) : kNothing;
        set(site.spec, container, first, second, value);
        NEXT;
    }
    OPERATION(op_call)
    {
        MAY_FAIL;
        if (--ticks_ <= 0) [[unlikely]]
            poll();
        const Site &site = frame->function->sites[size_t(pc->c)];
        if (frame->me.script()->prototype == site.knownFor) [[likely]] {
            const Value me = frame->me;
            enter(site, *site.known, me, me, registers + pc->b, registers + pc->a);
        } else {
            callSite(*frame, Op::call, *pc);
        }
        ENTER_FRAME;
        STAY;
    }
    OPERATION(op_send)
    {
        TICK;
        MAY_FAIL;
        callSite(*frame, Op::send, *pc);
        ENTER_FRAME;
        STAY;
    }
    OPERATION(op_callValue)
    {
        TICK;
        MAY_FAIL;
        callSite(*frame, Op::callValue, *pc);
        ENTER_FRAME;
        STAY;
    }
    OPERATION(op_command)
    {
        TICK;
        MAY_FAIL;
        const Site &site = frame->function->sites[size_t(pc->c)];
        const Value *base = registers + pc->b;
        {
            Value result = command({site, base[0], base[1], base + 2});
            frame = &frames_.back();  // the command may have run a script
            registers[pc->a] = std::move(result);
        }
        NEXT;
    }
    OPERATION(op_specify)
    {
        MAY_FAIL;
        registers[pc->a] =
            specified(frame->function->sites[size_t(pc->c)].what, defined(*frame, pc->b, OPERAND(pc->b)));
        NEXT;
    }
    OPERATION(op_jump)
    {
        pc = frame->function->code.data() + pc->wide;
        STAY;
    }
    OPERATION(op_loop)
    {
        TICK;
        pc = frame->function->code.data() + pc->wide;
        STAY;
    }
    OPERATION(op_countPrepare)
    {
        MAY_FAIL;
        for (int i = 0; i < 3; ++i)
            registers[pc->a + i] = Value::of(whole(registers[pc->a + i]));
        if (registers[pc->a + 2].integer() == 0)
            raise(-2700, "Can’t repeat by 0.");
        NEXT;
    }
    OPERATION(op_countNext)
    {
        Value *state = registers + pc->a;
        const int64_t now = state[0].integer(), step = state[2].integer();
        if (step > 0 ? now <= state[1].integer() : now >= state[1].integer()) [[likely]] {
            TICK;
            registers[pc->b].put(now);
            state[0].setInteger(now + step);
            pc = frame->function->code.data() + pc[1].wide;
        } else {
            pc += 2;
        }
        STAY;
    }
    OPERATION(op_eachPrepare)
    {
        MAY_FAIL;
        Value *state = registers + pc->a;
        {
            Value whole = contentsOf(state[0]);
            if (whole.is(Kind::text))
                whole = get({Specifier::every, Word::character, type::character}, whole, {}, {});
            else if (whole.is(Kind::record))
                whole = coerced(whole, type::list);
            else if (!whole.is(Kind::list))
                raise(error::notFound, "Can’t get item 1 of " + display(whole) + ".", whole);
            state[1] = Value::of(int64_t(0));
            state[2] = Value::of(int64_t(whole.list()->items.size()));
            state[0] = std::move(whole);
        }
        NEXT;
    }
    OPERATION(op_eachNext)
    {
        Value *state = registers + pc->a;
        const auto &items = state[0].list()->items;
        const size_t at = size_t(state[1].integer());
        if (at < items.size() && at < size_t(state[2].integer())) {
            TICK;
            registers[pc->b] = items[at];
            state[1].setInteger(int64_t(at + 1));
            pc = frame->function->code.data() + pc[1].wide;
        } else {
            pc += 2;
        }
        STAY;
    }
    OPERATION(op_beginTry)
    {
        registers[pc->a] = Value::of(held());
        NEXT;
    }
    OPERATION(op_consider)
    {
        registers[pc->a] = Value::of(held());
        considering = (considering | uint32_t(pc->b)) & ~uint32_t(pc->c);
        NEXT;
    }
    OPERATION(op_restore)
    {
        hold(registers[pc->a].integer());
        NEXT;
    }
    OPERATION(op_limitTime)
    {
        MAY_FAIL;
        {
            const double seconds = number(defined(*frame, pc->b, OPERAND(pc->b)));
            registers[pc->a] = Value::of(held());
            timeLimit = uint32_t(std::clamp(seconds * 60, 1.0, double(INT32_MAX)));
        }
        NEXT;
    }
    OPERATION(op_fail)
    {
        MAY_FAIL;
        const Value *base = registers + pc->a;
        ScriptError raised{error::raised};
        if (base[1])
            raised.number = int32_t(whole(base[1]));
        if (base[0])
            raised.message = textOf(base[0]);
        else
            raised.message = base[1] ? messageFor(raised.number) : "An error has occurred.";
        raised.offending = base[2];
        raised.partial = base[3];
        raised.wanted = base[4];
        throw raised;
    }
    OPERATION(op_copy)
    {
        MAY_FAIL;
        registers[pc->a] = copied(defined(*frame, pc->b, OPERAND(pc->b)));
        NEXT;
    }
    OPERATION(op_giveBack)
    {
        const Value &given = OPERAND(pc->a);
        if (given.is(Kind::none)) [[unlikely]] {
            MAY_FAIL;
            // A handler that gives back what gave nothing gives nothing; a variable must be there.
            if (pc->a >= 0 && size_t(pc->a) < frame->function->variables.size() &&
                frame->function->variables[size_t(pc->a)] != Word::result)
                undefinedOperand(*frame, pc->a);
        }
    }
    OPERATION(op_giveBackRaw)
    {
        {
            Value given = pc->a >= 0 ? std::move(registers[pc->a]) : constants[pc->a];
            Value *result = frame->result;
            popFrame();
            *result = std::move(given);
        }
        if (frames_.size() == bottom)
            return {};
        ENTER_FRAME;
        NEXT;
    }
    OPERATION(op_giveNothing)
    {
        Value *result = frame->result;
        popFrame();
        result->clear();
        if (frames_.size() == bottom)
            return {};
        ENTER_FRAME;
        NEXT;
    }
    OPERATION(op_newScript)
    {
        MAY_FAIL;
        {
            Value script =
                heap.script(frame->function->prototype->program->prototypes[size_t(pc->wide)].get());
            script.script()->outer = frame->script;
            registers[pc->a] = std::move(script);
        }
        NEXT;
    }
    OPERATION(op_newHandler)
    {
        MAY_FAIL;
        registers[pc->a] = heap.handler(
            frame->function->prototype->program->functions[size_t(pc->wide)].get(), frame->script);
        NEXT;
    }
    OPERATION(op_log)
    {
        MAY_FAIL;
        {
            const Value value = contentsOf(defined(*frame, pc->a, OPERAND(pc->a)));
            host.log(value.is(Kind::text) ? utf8(value) : display(value));
        }
        NEXT;
    }
}

}  // namespace tarvik::osa
