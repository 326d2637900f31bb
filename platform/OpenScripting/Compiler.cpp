#include "private/Code.h"
#include "private/Vocabulary.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>

namespace tarvik::osa {

namespace {

constexpr int kMostRegisters = 30000, kMostConstants = 30000, kMostSites = 30000, kDeepest = 500;

struct FunctionScope;

struct ScriptScope {
    Prototype *prototype;
    ScriptScope *outer;
    FunctionScope *function;  // the handler it stands in
    std::map<Name, int> slots;
    std::map<Name, int> captured;  // variables of that handler
    std::set<Name> globals;        // declared in the script's body
    std::map<Name, Function *> handlers;
};

struct Loop {
    std::vector<size_t> exits;
    Name variable = 0;  // of an iteration over a list
    int registers = -1;
    int considering = -1;  // the register of the outermost `considering` inside
};

struct FunctionScope {
    Function *function;
    ScriptScope *script;
    std::map<Name, int> locals;
    std::set<Name> globals;
    bool usesResult = false;
    int result = -1;
    int next = 0;
    int told = -1;  // the register of what is told; -1: me
    bool tellsApplication = false;
    std::vector<Loop> loops;
    std::vector<std::pair<ScriptScope *, int>> pending;  // scripts being made here, and their registers
    std::map<std::pair<int, int64_t>, int> numbers;      // constants already there
};

void forVariables(const Node *pattern, const std::function<void(Name)> &visit)
{
    if (!pattern)
        return;
    if (pattern->kind == Node::variable)
        visit(pattern->name);
    if (pattern->kind == Node::list || pattern->kind == Node::record) {
        for (const Node *kid : pattern->kids)
            forVariables(kid, visit);
    }
}

class Compiler {
public:
    Compiler(Heap &heap, std::string_view source) : heap_(heap), program_(new Program)
    {
        program_->source = source;
    }
    ~Compiler()
    {
        if (program_)
            program_->release();
    }

    Program *run(const Node *root, Program *context, bool keepsVariables)
    {
        keepsVariables_ = keepsVariables;
        collectGlobals(root);
        Prototype *prototype = newPrototype(0, nullptr);
        program_->root = prototype;
        ScriptScope scope{prototype, nullptr, nullptr, {}, {}, {}, {}};
        root_ = &scope;
        if (context) {
            context->retain();
            program_->before = context;
            prototype->slots = context->root->slots;
            prototype->handlers = context->root->handlers;
            for (size_t i = 0; i < prototype->slots.size(); ++i)
                scope.slots[prototype->slots[i]] = int(i);
        }
        Function *initialise = newFunction(0, prototype);
        program_->initialise = initialise;
        FunctionScope function{};
        function.function = initialise;
        function.script = &scope;
        scriptBody(root, scope, function, -1);
        emit(Op::giveNothing, 0, 0, 0);
        finish(function);
        return std::exchange(program_, nullptr);
    }

private:
    // --- declarations ----------------------------------------------------------------------------------

    /// Names that some handler declares global, or that are asked for as `my x`: the script's top level keeps them in slots.
    void collectGlobals(const Node *node)
    {
        std::vector<const Node *> all{node};
        while (!all.empty()) {
            const Node *one = all.back();
            all.pop_back();
            if (!one)
                continue;
            if (one->kind == Node::globals)
                shared_.insert(one->names.begin(), one->names.end());
            if (one->kind == Node::specifier && one->spec.form == Specifier::property && one->a &&
                (one->a->kind == Node::me || one->a->kind == Node::it))
                shared_.insert(one->spec.name);
            if (one->kind == Node::referenceTo && one->a->kind == Node::variable)
                shared_.insert(one->a->name);
            for (const Node *kid : {one->a, one->b, one->c})
                all.push_back(kid);
            all.insert(all.end(), one->kids.begin(), one->kids.end());
        }
    }

    /// The names that a handler's body gives values to, not looking into handlers and scripts within.
    static void collectAssigned(const Node *node, const std::function<void(Name)> &visit,
                                FunctionScope &function)
    {
        std::vector<const Node *> all{node};
        while (!all.empty()) {
            const Node *one = all.back();
            all.pop_back();
            if (!one)
                continue;
            switch (one->kind) {
            case Node::set:
            case Node::copy: forVariables(one->a, visit); break;
            case Node::counting:
            case Node::iterating: visit(one->name); break;
            case Node::trial:
                for (const Node *kid : one->kids)
                    forVariables(kid, visit);
                break;
            case Node::locals:
                for (const Name name : one->names)
                    visit(name);
                break;
            case Node::globals: function.globals.insert(one->names.begin(), one->names.end()); break;
            case Node::result: function.usesResult = true; break;
            case Node::script:
                if (one->name)
                    visit(one->name);
                continue;
            case Node::handler: continue;
            default: break;
            }
            for (const Node *kid : {one->a, one->b, one->c})
                all.push_back(kid);
            all.insert(all.end(), one->kids.begin(), one->kids.end());
        }
    }

    Prototype *newPrototype(Name name, const Prototype *outer)
    {
        auto &made = program_->prototypes.emplace_back(new Prototype);
        made->program = program_;
        made->name = name;
        made->outer = outer;
        return made.get();
    }
    Function *newFunction(Name name, const Prototype *prototype)
    {
        auto &made = program_->functions.emplace_back(new Function);
        made->name = name;
        made->prototype = prototype;
        return made.get();
    }
    int newSlot(ScriptScope &scope, Name name)
    {
        if (scope.prototype->slots.size() >= size_t(kMostRegisters))
            raise(error::tooLarge, "The script is too large.");
        const int slot = int(scope.prototype->slots.size());
        scope.prototype->slots.push_back(name);
        if (name)
            scope.slots[name] = slot;
        return slot;
    }
    int slotFor(ScriptScope &scope, Name name)
    {
        const auto known = scope.slots.find(name);
        return known == scope.slots.end() ? newSlot(scope, name) : known->second;
    }

    /// Compiles a script's body. Its properties are filled by code of `maker`, whose register `object` holds the script
    /// (-1: the script that the code runs in).
    void scriptBody(const Node *body, ScriptScope &scope, FunctionScope &maker, int object)
    {
        std::vector<const Node *> statements;
        const Node *run = nullptr;
        for (const Node *node : body->kids) {
            switch (node->kind) {
            case Node::property:
                if (node->name != Word::parent)
                    slotFor(scope, node->name);
                break;
            case Node::script:
                if (node->name)
                    slotFor(scope, node->name);
                else
                    statements.push_back(node);
                break;
            case Node::handler: {
                if (node->name == Word::run)
                    run = node;
                Function *function = newFunction(node->name, scope.prototype);
                scope.handlers[node->name] = function;
                scope.prototype->handlers[node->name] = function;
                break;
            }
            case Node::globals:
                for (const Name name : node->names) {
                    scope.globals.insert(name);
                    slotFor(*root_, name);
                }
                break;
            default: statements.push_back(node);
            }
        }
        maker.pending.emplace_back(&scope, object);
        // First all scripts and properties, in their order.
        for (const Node *node : body->kids) {
            const int mark = maker.next;
            current_ = &maker;
            if (node->kind == Node::property && node->name == Word::parent) {
                at(node);
                const int parent = expression(node->a);
                int self = object;
                if (self < 0)
                    emit(Op::me, self = temporary(), 0, 0);
                emit(Op::setParent, self, parent, 0);
            } else if (node->kind == Node::property) {
                at(node);
                storeIn(object, scope.slots[node->name], expression(node->a));
            } else if (node->kind == Node::script && node->name) {
                const int script = temporary();
                makeScript(node, scope, maker, script);
                storeIn(object, scope.slots[node->name], script);
            }
            maker.next = mark;
        }
        maker.pending.pop_back();
        for (const Node *node : body->kids) {
            if (node->kind == Node::handler)
                handler(node, scope, *scope.handlers[node->name]);
        }
        if (!run) {
            Function *function = newFunction(Word::run, scope.prototype);
            scope.prototype->handlers[Word::run] = function;
            Node block;
            block.kind = Node::block;
            block.range = body->range;
            for (const Node *node : statements)
                block.kids.push_back(const_cast<Node *>(node));
            functionBody(&block, scope, *function, {}, true);
        } else if (!statements.empty()) {
            ScriptError failure{error::syntax,
                                "The “run” handler is already there: no statements may stand outside it."};
            failure.range = statements[0]->range;
            failure.located = true;
            throw failure;
        }
        current_ = &maker;
    }

    void storeIn(int object, int slot, int operand)
    {
        if (object < 0)
            emit(Op::setSlot, operand, 0, slot);
        else
            emit(Op::setScriptSlot, object, operand, slot);
    }

    /// A script object into a register of the function that makes it.
    void makeScript(const Node *node, ScriptScope &outer, FunctionScope &maker, int target)
    {
        Prototype *prototype = newPrototype(node->name, outer.prototype);
        ScriptScope scope{prototype, &outer, &maker, {}, {}, {}, {}};
        at(node);
        emitWide(Op::newScript, target, int(program_->prototypes.size() - 1));
        scriptBody(node->a, scope, maker, target);
        current_ = &maker;
        for (const auto &[name, slot] : scope.captured) {
            if (const auto local = maker.locals.find(name); local != maker.locals.end())
                emit(Op::setScriptSlot, target, local->second, slot);
        }
    }

    void handler(const Node *node, ScriptScope &scope, Function &function)
    {
        std::vector<const Node *> patterns;
        function.labelled = node->flag;
        if (node->b) {
            function.hasDirect = true;
            patterns.push_back(node->b);
        }
        for (const Node *kid : node->kids)
            patterns.push_back(kid);
        function.labels = node->names;
        function.parameters = uint16_t(patterns.size());
        functionBody(node->a, scope, function, patterns, false);
    }

    void functionBody(const Node *body, ScriptScope &scope, Function &function,
                      const std::vector<const Node *> &patterns, bool topLevel)
    {
        FunctionScope *before = current_;
        FunctionScope here{};
        here.function = &function;
        here.script = &scope;
        current_ = &here;
        // Parameters are the first registers, in order; then the variables.
        for (const Node *pattern : patterns) {
            const Name name = pattern->kind == Node::variable ? pattern->name : Name(Word::none);
            function.variables.push_back(name);
            if (name)
                here.locals[name] = here.next;
            ++here.next;
        }
        std::vector<Name> assigned;
        const auto visit = [&](Name name) { assigned.push_back(name); };
        for (const Node *pattern : patterns)
            forVariables(pattern, visit);
        std::set<Name> explicitLocals;
        collectAssigned(body, visit, here);
        for (const Node *one : body->kids) {
            if (one->kind == Node::locals)
                explicitLocals.insert(one->names.begin(), one->names.end());
        }
        for (const Name name : here.globals)
            slotFor(*root_, name);
        for (const Name name : assigned) {
            if (here.locals.count(name) || here.globals.count(name))
                continue;
            if (!explicitLocals.count(name)) {
                bool outside = false;
                for (const ScriptScope *one = &scope; one && !outside; one = one->outer)
                    outside = one->slots.count(name) || one->globals.count(name);
                if (outside)
                    continue;
                if (topLevel && &scope == root_ && (keepsVariables_ || shared_.count(name))) {
                    newSlot(scope, name);
                    continue;
                }
            }
            here.locals[name] = here.next++;
            function.variables.push_back(name);
        }
        here.result = here.next++;
        function.variables.push_back(Word::result);
        for (size_t i = 0; i < patterns.size(); ++i) {
            if (patterns[i]->kind != Node::variable) {
                at(patterns[i]);
                assign(patterns[i], int(i));
            }
        }
        statements(body, true);
        at(body);
        emit(Op::giveBackRaw, here.result, 0, 0);
        finish(here);
        current_ = before;
    }

    void finish(FunctionScope &scope)
    {
        Function &function = *scope.function;
        std::reverse(function.constants.begin(), function.constants.end());
        function.registers = uint16_t(std::max<int>(function.registers, scope.next) + 1);
    }

    // --- code ------------------------------------------------------------------------------------------

    Function &function() { return *current_->function; }
    void at(const Node *node) { range_ = node->range; }
    size_t here() { return function().code.size(); }

    size_t emit(Op op, int a, int b, int c)
    {
        Instruction instruction;
        instruction.op = op;
        instruction.a = int16_t(a);
        instruction.b = int16_t(b);
        instruction.c = int16_t(c);
        return add(instruction);
    }
    size_t emitWide(Op op, int a, int wide)
    {
        Instruction instruction;
        instruction.op = op;
        instruction.a = int16_t(a);
        instruction.wide = wide;
        return add(instruction);
    }
    size_t add(const Instruction &instruction)
    {
        function().code.push_back(instruction);
        function().ranges.push_back(range_);
        return function().code.size() - 1;
    }
    size_t jump() { return emitWide(Op::jump, 0, -1); }
    void land(size_t jump) { function().code[jump].wide = int32_t(here()); }

    int temporary()
    {
        const int made = current_->next++;
        if (made >= kMostRegisters)
            raise(error::tooLarge, "The script is too large.");
        function().registers = std::max<uint16_t>(function().registers, uint16_t(current_->next));
        return made;
    }
    int temporaries(int count)
    {
        const int first = current_->next;
        for (int i = 0; i < count; ++i)
            temporary();
        return first;
    }
    int target(int wanted) { return wanted >= 0 ? wanted : temporary(); }

    int constant(const Value &value)
    {
        auto &constants = function().constants;
        std::optional<std::pair<int, int64_t>> key;
        if (!value.isObject())
            key.emplace(int(value.kind()), value.integer());
        if (key) {
            if (const auto known = current_->numbers.find(*key); known != current_->numbers.end())
                return known->second;
        }
        if (constants.size() >= size_t(kMostConstants)) {
            raise(error::tooLarge, "The script is too large.");
        }
        constants.push_back(value);
        const int operand = -int(constants.size());
        if (key)
            current_->numbers[*key] = operand;
        return operand;
    }
    int site(Site site)
    {
        auto &sites = function().sites;
        if (sites.size() >= size_t(kMostSites))
            raise(error::tooLarge, "The script is too large.");
        sites.push_back(std::move(site));
        return int(sites.size() - 1);
    }

    // --- variables -------------------------------------------------------------------------------------

    struct Place {
        enum { local, slot, scriptSlot, handler, nowhere } kind;
        int a = 0, b = 0;
        const Function *function = nullptr;
    };

    Place placeOf(Name name)
    {
        FunctionScope &here = *current_;
        if (here.globals.count(name))
            return rootSlot(name);
        // The properties of scripts that are just being made.
        for (auto pending = here.pending.rbegin(); pending != here.pending.rend(); ++pending) {
            if (pending->second < 0)
                continue;
            if (const auto slot = pending->first->slots.find(name); slot != pending->first->slots.end())
                return {Place::scriptSlot, pending->second, slot->second};
        }
        if (const auto local = here.locals.find(name); local != here.locals.end())
            return {Place::local, local->second};
        int level = 0;
        for (ScriptScope *scope = here.script; scope; scope = scope->outer, ++level) {
            if (scope->globals.count(name))
                return rootSlot(name);
            if (const auto slot = scope->slots.find(name); slot != scope->slots.end())
                return {Place::slot, level, slot->second};
            if (scope->function && scope->function->locals.count(name)) {
                // A variable of the handler that the script stands in: the script keeps its value of that moment.
                const int hidden = newSlot(*scope, 0);
                scope->slots[name] = hidden;
                scope->captured[name] = hidden;
                return {Place::slot, level, hidden};
            }
            if (const auto handler = scope->handlers.find(name);
                handler != scope->handlers.end() && level == 0)
                return {Place::handler, 0, 0, handler->second};
        }
        return {Place::nowhere};
    }
    Place rootSlot(Name name)
    {
        int level = 0;
        for (ScriptScope *scope = current_->script; scope != root_; scope = scope->outer)
            ++level;
        return {Place::slot, level, slotFor(*root_, name)};
    }

    int variable(const Node *node, int wanted)
    {
        const Place place = placeOf(node->name);
        at(node);
        switch (place.kind) {
        case Place::local:
            if (wanted < 0)
                return place.a;
            emit(Op::move, wanted, place.a, 0);
            return wanted;
        case Place::slot: emit(Op::getSlot, wanted = target(wanted), place.a, place.b); return wanted;
        case Place::scriptSlot:
            emit(Op::getScriptSlot, wanted = target(wanted), place.a, place.b);
            return wanted;
        case Place::handler: {
            for (size_t i = 0; i < program_->functions.size(); ++i) {
                if (program_->functions[i].get() == place.function)
                    emitWide(Op::newHandler, wanted = target(wanted), int(i));
            }
            return wanted;
        }
        default: break;
        }
        if (current_->tellsApplication) {  // a term of the application's
            Site term;
            term.spec = {Specifier::property, node->name, 0};
            emit(Op::get, wanted = target(wanted), current_->told, site(std::move(term)));
            return wanted;
        }
        const int name = constant(heap_.text(heap_.names.spelling(node->name)));
        emitWide(Op::undefined, 0, name);
        return target(wanted);
    }

    void assign(const Node *pattern, int operand)
    {
        at(pattern);
        switch (pattern->kind) {
        case Node::variable: {
            const Place place = placeOf(pattern->name);
            if (place.kind == Place::local && place.a != operand)
                emit(Op::move, place.a, operand, 0);
            else if (place.kind == Place::slot)
                emit(Op::setSlot, operand, place.a, place.b);
            else if (place.kind == Place::scriptSlot)
                emit(Op::setScriptSlot, place.a, operand, place.b);
            else if (place.kind != Place::local)
                emit(Op::setSlot, operand, rootLevel(), slotFor(*root_, pattern->name));
            return;
        }
        case Node::result: emit(Op::move, current_->result, operand, 0); return;
        case Node::list: {
            const int mark = current_->next;
            for (size_t i = 0; i < pattern->kids.size(); ++i) {
                Site item;
                item.spec = {Specifier::index, Word::item, type::item};
                item.from = int16_t(constant(Value::of(int64_t(i + 1))));
                const int part = temporary();
                emit(Op::get, part, operand, site(std::move(item)));
                assign(pattern->kids[i], part);
            }
            current_->next = mark;
            return;
        }
        case Node::record: {
            const int mark = current_->next;
            for (size_t i = 0; i < pattern->kids.size(); ++i) {
                Site field;
                field.spec = {Specifier::property, pattern->names[i], 0};
                const int part = temporary();
                emit(Op::get, part, operand, site(std::move(field)));
                assign(pattern->kids[i], part);
            }
            current_->next = mark;
            return;
        }
        case Node::specifier: {
            // Contents of the variable of an iteration: the item of the list itself.
            if (pattern->spec.form == Specifier::property && pattern->spec.name == Word::contents &&
                pattern->a && pattern->a->kind == Node::variable) {
                for (auto loop = current_->loops.rbegin(); loop != current_->loops.rend(); ++loop) {
                    if (loop->registers >= 0 && loop->variable == pattern->a->name) {
                        Site item;
                        item.spec = {Specifier::index, Word::item, type::item};
                        item.from = int16_t(loop->registers + 1);
                        emit(Op::set, operand, loop->registers, site(std::move(item)));
                        assign(pattern->a, operand);
                        return;
                    }
                }
            }
            const int mark = current_->next;
            const auto [container, place] = specifier(pattern);
            at(pattern);
            emit(Op::set, operand, container, place);
            current_->next = mark;
            return;
        }
        default: raise(error::syntax, "Can’t set this.");
        }
    }
    int rootLevel()
    {
        int level = 0;
        for (ScriptScope *scope = current_->script; scope != root_; scope = scope->outer)
            ++level;
        return level;
    }

    // --- expressions -----------------------------------------------------------------------------------

    /// Places in places (`a's b's c`, `x is running is running`) may be deeper than what the parser nests.
    struct Depth {
        Depth(Compiler &compiler, const Node *node) : compiler(compiler)
        {
            if (++compiler.depth_ <= kDeepest)
                return;
            ScriptError failure{error::syntax, "The script is nested too deeply."};
            failure.range = node->range;
            failure.located = true;
            throw failure;
        }
        ~Depth() { --compiler.depth_; }
        Compiler &compiler;
    };

    static bool isOperator(const Node *node)
    {
        return node->kind == Node::binary || node->kind == Node::coercion || node->kind == Node::conjunction;
    }

    /// `1 + 2 + 3 ...`: the operators one after the other, however many there are. What is not yet the result stays out of the
    /// wanted register: the variable that lives there may stand on a right side.
    int operators(const Node *node, int wanted)
    {
        std::vector<const Node *> chain;
        for (; isOperator(node); node = node->a)
            chain.push_back(node);
        const bool isApart = wanted >= 0 && (chain.size() > 1 || chain.front()->kind == Node::conjunction);
        const int goesTo = target(wanted), before = current_->next, partial = isApart ? temporary() : goesTo,
                  after = current_->next;
        int left = expression(node);
        for (auto one = chain.rbegin(); one != chain.rend(); ++one) {
            const bool isLast = *one == chain.front();
            if ((*one)->kind == Node::conjunction) {
                at((*one)->a);
                emit(Op::toBoolean, partial, left, 0);
                emit((*one)->op == Word::and_ ? Op::testTrue : Op::testFalse, partial, 0, 0);
                const size_t over = jump();
                const int right = expression((*one)->b);
                at((*one)->b);
                emit(Op::toBoolean, partial, right, 0);
                land(over);
                if (isLast && isApart)
                    emit(Op::move, goesTo, partial, 0);
            } else {
                const int right = expression((*one)->b);
                at(*one);
                emit((*one)->kind == Node::coercion ? Op::coerce : operation((*one)->op),
                     isLast ? goesTo : partial, left, right);
            }
            left = partial;
            current_->next = after;
        }
        current_->next = before;
        return goesTo;
    }

    /// The operand that holds the value; `wanted`: the register that it must be in.
    int expression(const Node *node, int wanted = -1)
    {
        const Depth depth(*this, node);
        switch (node->kind) {
        case Node::literal: {
            const int operand = constant(node->value);
            if (wanted < 0)
                return operand;
            at(node);
            emit(Op::move, wanted, operand, 0);
            return wanted;
        }
        case Node::variable: return variable(node, wanted);
        case Node::list: {
            wanted = target(wanted);
            const int after = current_->next;
            const int base = temporaries(int(node->kids.size()));
            for (size_t i = 0; i < node->kids.size(); ++i)
                into(node->kids[i], base + int(i));
            at(node);
            emit(Op::newList, wanted, base, int(node->kids.size()));
            current_->next = after;
            return wanted;
        }
        case Node::record: {
            wanted = target(wanted);
            const int after = current_->next;
            const int base = temporaries(int(node->kids.size()));
            for (size_t i = 0; i < node->kids.size(); ++i)
                into(node->kids[i], base + int(i));
            Site labels;
            labels.labels = node->names;
            at(node);
            emit(Op::newRecord, wanted, base, site(std::move(labels)));
            current_->next = after;
            return wanted;
        }
        case Node::negate: return unary(Op::negate, node, wanted);
        case Node::negation: return unary(Op::negation, node, wanted);
        case Node::binary:
        case Node::coercion:
        case Node::conjunction: return operators(node, wanted);
        case Node::specifier: {
            wanted = target(wanted);
            const int after = current_->next;
            // The commonest place has an instruction of its own.
            if (node->spec.form == Specifier::index && node->spec.code == type::item && node->a &&
                node->b->kind != Node::specifier) {
                const int container = expression(node->a), index = expression(node->b);
                at(node);
                emit(Op::getItem, wanted, container, index);
                current_->next = after;
                return wanted;
            }
            const auto [container, place] = specifier(node);
            at(node);
            emit(Op::get, wanted, container, place);
            current_->next = after;
            return wanted;
        }
        case Node::call: return call(node, wanted);
        case Node::labelledCall: return call(node, wanted);
        case Node::command: return command(node, wanted);
        case Node::referenceTo: {
            wanted = target(wanted);
            const int after = current_->next;
            if (node->a->kind == Node::specifier) {
                const auto [container, place] = specifier(node->a);
                at(node);
                emit(Op::refer, wanted, container, place);
            } else if (node->a->kind == Node::variable) {
                const Place place = placeOf(node->a->name);
                Site variable;
                variable.spec = {Specifier::variable, node->a->name, 0};
                int container;
                if (place.kind == Place::slot && place.a == 0) {
                    variable.spec.form = Specifier::property;
                    emit(Op::me, container = temporary(), 1, 0);
                } else {
                    container = expression(node->a);
                }
                at(node);
                emit(Op::refer, wanted, container, site(std::move(variable)));
            } else {
                expression(node->a, wanted);
            }
            current_->next = after;
            return wanted;
        }
        case Node::it:
            if (current_->told >= 0) {
                if (wanted < 0)
                    return current_->told;
                emit(Op::move, wanted, current_->told, 0);
                return wanted;
            }
            [[fallthrough]];
        case Node::me:
            at(node);
            emit(Op::me, wanted = target(wanted), 0, 0);
            return wanted;
        case Node::result:
            if (wanted < 0)
                return current_->result;
            at(node);
            emit(Op::move, wanted, current_->result, 0);
            return wanted;
        case Node::specify: {
            wanted = target(wanted);
            const int after = current_->next;
            Site what;
            what.what = node->code;
            const int of = node->a ? expression(node->a) : constant(heap_.emptyText());
            at(node);
            emit(Op::specify, wanted, of, site(std::move(what)));
            current_->next = after;
            return wanted;
        }
        default: raise(error::syntax, "Expected expression.");
        }
    }

    /// The value into a register: with the check that there is one.
    void into(const Node *node, int wanted)
    {
        const int operand = expression(node, wanted);
        if (operand != wanted)
            emit(Op::move, wanted, operand, 0);
    }

    int unary(Op op, const Node *node, int wanted)
    {
        wanted = target(wanted);
        const int after = current_->next;
        const int operand = expression(node->a);
        at(node);
        emit(op, wanted, operand, 0);
        current_->next = after;
        return wanted;
    }

    static Op operation(uint8_t op)
    {
        static constexpr Op kOps[] = {Op::add,      Op::subtract,     Op::multiply,   Op::divide,
                                      Op::quotient, Op::modulo,       Op::power,      Op::join,
                                      Op::equal,    Op::unequal,      Op::less,       Op::lessEqual,
                                      Op::greater,  Op::greaterEqual, Op::contains,   Op::containsNot,
                                      Op::isIn,     Op::isNotIn,      Op::startsWith, Op::endsWith};
        return kOps[op];
    }

    /// The container's operand and the site of the place in it.
    std::pair<int, int> specifier(const Node *node)
    {
        int container;
        const bool delimiters =
            node->spec.form == Specifier::property && node->spec.name == Word::textItemDelimiters;
        if (delimiters && (!node->a || node->a->kind == Node::it || node->a->kind == Node::me))
            container = constant(Value::type(code("ascr")));
        else if (node->a)
            container = expression(node->a);
        else if (current_->told >= 0)
            container = current_->told;
        else
            emit(Op::me, container = temporary(), 0, 0);
        Site place;
        place.spec = node->spec;
        const auto end = [&](const Node *index) -> int16_t {
            // Ends that are elements of their own stay references: `text from word 1 to word 3`.
            if (index->kind == Node::specifier && !index->a && index->b) {
                Site inner;
                inner.spec = index->spec;
                inner.from = int16_t(expression(index->b));
                const int reference = temporary();
                emit(Op::refer, reference, constant(Value::missing()), site(std::move(inner)));
                return int16_t(reference);
            }
            return int16_t(expression(index));
        };
        if (node->b)
            place.from = end(node->b);
        if (node->c)
            place.to = end(node->c);
        return {container, site(std::move(place))};
    }

    int call(const Node *node, int wanted)
    {
        wanted = target(wanted);
        const int after = current_->next;
        Site here;
        here.name = node->name;
        std::vector<const Node *> values;
        if (node->kind == Node::labelledCall) {
            here.labelled = true;
            here.labels = node->names;
            if (node->b) {
                here.hasDirect = true;
                values.push_back(node->b);
            }
        }
        values.insert(values.end(), node->kids.begin(), node->kids.end());
        here.count = uint16_t(values.size());
        Op op = Op::call;
        const Place place = node->a ? Place{Place::nowhere} : placeOf(node->name);
        here.continues = node->flag;
        const bool held = !here.continues && (place.kind == Place::local || place.kind == Place::slot ||
                                              place.kind == Place::scriptSlot);
        if (held)
            op = Op::callValue;
        else if (!here.continues && (node->a ? node->a->kind != Node::me : current_->told >= 0))
            op = Op::send;
        const int count = int(values.size());
        const int base = temporaries(count + (op != Op::call));
        int first = base;
        if (op == Op::callValue) {
            Node name;
            name.kind = Node::variable;
            name.name = node->name;
            name.range = node->range;
            into(&name, first++);
        } else if (op == Op::send) {
            if (node->a)
                into(node->a, first);
            else
                emit(Op::move, first, current_->told, 0);
            ++first;
        }
        for (int i = 0; i < count; ++i)
            into(values[size_t(i)], first + i);
        at(node);
        emit(op, wanted, base, site(std::move(here)));
        current_->next = after;
        return wanted;
    }

    int command(const Node *node, int wanted)
    {
        wanted = target(wanted);
        const int after = current_->next;
        Site here;
        here.command = node->verb;
        here.eventClass = node->code;
        here.eventID = node->clears;
        here.codes = node->codes;
        const int base = temporaries(int(node->kids.size()) + 2);
        if (current_->told >= 0)
            emit(Op::move, base, current_->told, 0);
        else
            emit(Op::me, base, 0, 0);
        if (node->a)
            into(node->a, base + 1);
        else
            emit(Op::none, base + 1, 0, 0);
        for (size_t i = 0; i < node->kids.size(); ++i)
            into(node->kids[i], base + 2 + int(i));
        at(node);
        emit(Op::command, wanted, base, site(std::move(here)));
        current_->next = after;
        return wanted;
    }

    // --- statements ------------------------------------------------------------------------------------

    void statements(const Node *block, bool last)
    {
        for (size_t i = 0; i < block->kids.size(); ++i)
            statement(block->kids[i], last && i + 1 == block->kids.size());
    }
    /// A body after whose end, or `exit repeat` from within, holds again what register `kept` says.
    void heldBody(const Node *node, int kept, bool last)
    {
        auto &loops = current_->loops;
        const int before = loops.empty() ? -1 : loops.back().considering;
        if (!loops.empty() && before < 0)
            loops.back().considering = kept;
        branch(node->b, last);
        if (!loops.empty())
            loops.back().considering = before;
        at(node);
        emit(Op::restore, kept, 0, 0);
    }
    void branch(const Node *node, bool last)
    {
        if (node->kind == Node::block)
            statements(node, last);
        else
            statement(node, last);
    }

    /// Jumps over what follows when the condition is not `wanted`: the result is to be landed.
    size_t test(const Node *condition, bool wanted)
    {
        const int mark = current_->next;
        if (condition->kind == Node::negation) {
            const size_t over = test(condition->a, !wanted);
            current_->next = mark;
            return over;
        }
        if (condition->kind == Node::binary && condition->op >= Node::equal &&
            condition->op <= Node::greaterEqual && wanted) {
            const int left = expression(condition->a), right = expression(condition->b);
            static constexpr Op kTests[] = {Op::testEqual,     Op::testUnequal, Op::testLess,
                                            Op::testLessEqual, Op::testGreater, Op::testGreaterEqual};
            at(condition);
            emit(kTests[condition->op - Node::equal], left, right, 0);
        } else {
            const int operand = expression(condition);
            at(condition);
            emit(wanted ? Op::testTrue : Op::testFalse, operand, 0, 0);
        }
        current_->next = mark;
        return jump();
    }

    void statement(const Node *node, bool last)
    {
        FunctionScope &scope = *current_;
        const int mark = scope.next;
        const bool keeps = last || scope.usesResult;
        at(node);
        switch (node->kind) {
        case Node::expression: {
            const int operand = expression(node->a, keeps ? scope.result : -1);
            if (!keeps && node->a->kind == Node::variable)
                emit(Op::move, temporary(), operand, 0);  // it must be there
            break;
        }
        case Node::set: set(node, keeps); break;
        case Node::copy: {
            const int value = temporary();
            const int operand = expression(node->b);
            at(node);
            emit(Op::copy, value, operand, 0);
            assign(node->a, value);
            if (keeps)
                emit(Op::move, scope.result, value, 0);
            break;
        }
        case Node::conditional: {
            std::vector<size_t> ends;
            for (const Node *one = node; one;) {
                const size_t over = test(one->a, true);
                branch(one->b, last);
                const Node *other = one->c;
                if (other)
                    ends.push_back(jump());
                land(over);
                if (other && other->kind == Node::conditional) {
                    one = other;
                    continue;
                }
                if (other)
                    branch(other, last);
                one = nullptr;
            }
            for (const size_t end : ends)
                land(end);
            break;
        }
        case Node::forever: {
            const size_t start = here();
            scope.loops.emplace_back();
            branch(node->b, last);
            at(node);
            emitWide(Op::loop, 0, int(start));
            leaveLoop();
            break;
        }
        case Node::whilst: {
            const size_t start = here();
            const size_t over = test(node->a, !node->flag);
            scope.loops.emplace_back();
            branch(node->b, last);
            at(node);
            emitWide(Op::loop, 0, int(start));
            land(over);
            leaveLoop();
            break;
        }
        case Node::times: {
            const int base = temporaries(4);
            emit(Op::move, base, constant(Value::of(int64_t(1))), 0);
            into(node->a, base + 1);
            emit(Op::move, base + 2, constant(Value::of(int64_t(1))), 0);
            counted(node, base, base + 3, nullptr, last);
            break;
        }
        case Node::counting: {
            const int base = temporaries(4);
            into(node->kids[0], base);
            into(node->kids[1], base + 1);
            if (node->kids[2])
                into(node->kids[2], base + 2);
            else
                emit(Op::move, base + 2, constant(Value::of(int64_t(1))), 0);
            Node variable;
            variable.kind = Node::variable;
            variable.name = node->name;
            variable.range = node->range;
            const Place place = placeOf(node->name);
            if (place.kind == Place::local)
                counted(node, base, place.a, nullptr, last);
            else
                counted(node, base, base + 3, &variable, last);
            break;
        }
        case Node::iterating: {
            const int base = temporaries(4);
            into(node->a, base);
            at(node);
            emit(Op::eachPrepare, base, 0, 0);
            Node variable;
            variable.kind = Node::variable;
            variable.name = node->name;
            variable.range = node->range;
            const Place place = placeOf(node->name);
            const int item = place.kind == Place::local ? place.a : base + 3;
            const size_t first = jump(), start = here();
            if (item == base + 3)
                assign(&variable, item);
            scope.loops.emplace_back();
            scope.loops.back().variable = node->name;
            scope.loops.back().registers = base;
            branch(node->b, last);
            at(node);
            land(first);
            emit(Op::eachNext, base, item, 0);
            emitWide(Op::jump, 0, int(start));
            leaveLoop();
            break;
        }
        case Node::leave: {
            if (scope.loops.empty()) {
                ScriptError failure{error::syntax, "“exit repeat” was not inside a repeat loop."};
                failure.range = node->range;
                failure.located = true;
                throw failure;
            }
            if (scope.loops.back().considering >= 0)
                emit(Op::restore, scope.loops.back().considering, 0, 0);
            scope.loops.back().exits.push_back(jump());
            break;
        }
        case Node::giveBack:
            if (node->a) {
                const int operand = expression(node->a);
                at(node);
                emit(Op::giveBack, operand, 0, 0);
            } else {
                emit(Op::giveNothing, 0, 0, 0);
            }
            break;
        case Node::trial: trial(node, last); break;
        case Node::failure: {
            const int base = temporaries(5);
            for (int i = 0; i < 5; ++i) {
                if (node->kids[size_t(i)])
                    into(node->kids[size_t(i)], base + i);
                else
                    emit(Op::none, base + i, 0, 0);
            }
            at(node);
            emit(Op::fail, base, 0, 0);
            break;
        }
        case Node::considering: {
            const int kept = temporary();
            emit(Op::consider, kept, int(node->code), int(node->clears));
            heldBody(node, kept, last);
            break;
        }
        case Node::tell: {
            const int told = temporary();
            into(node->a, told);
            const int before = std::exchange(scope.told, told);
            const bool application =
                std::exchange(scope.tellsApplication,
                              node->a->kind == Node::specify && node->a->code == kSpecifyApplication);
            branch(node->b, last);
            scope.told = before;
            scope.tellsApplication = application;
            break;
        }
        case Node::timeout: {
            const int kept = temporary(), seconds = expression(node->a);
            at(node);
            emit(Op::limitTime, kept, seconds, 0);
            heldBody(node, kept, last);
            break;
        }
        case Node::script: {
            const int script = keeps && !node->name ? scope.result : temporary();
            makeScript(node, *scope.script, scope, script);
            if (node->name) {
                Node variable;
                variable.kind = Node::variable;
                variable.name = node->name;
                variable.range = node->range;
                assign(&variable, script);
            }
            if (keeps && script != scope.result)
                emit(Op::move, scope.result, script, 0);
            break;
        }
        case Node::log: {
            const int operand = expression(node->a);
            at(node);
            emit(Op::log, operand, 0, 0);
            break;
        }
        case Node::block: statements(node, last); break;
        case Node::handler:
        case Node::property: {
            ScriptError failure{error::syntax, node->kind == Node::handler
                                                   ? "A handler can’t go inside another statement."
                                                   : "A property declaration can’t go inside a handler."};
            failure.range = node->range;
            failure.located = true;
            throw failure;
        }
        default: break;
        }
        scope.next = mark;
    }

    void leaveLoop()
    {
        for (const size_t exit : current_->loops.back().exits)
            land(exit);
        current_->loops.pop_back();
    }

    void counted(const Node *node, int base, int counter, const Node *variable, bool last)
    {
        at(node);
        emit(Op::countPrepare, base, 0, 0);
        const size_t first = jump(), start = here();
        if (variable)
            assign(variable, counter);
        current_->loops.emplace_back();
        branch(node->b, last);
        at(node);
        land(first);
        emit(Op::countNext, base, counter, 0);
        emitWide(Op::jump, 0, int(start));
        leaveLoop();
    }

    void set(const Node *node, bool keeps)
    {
        FunctionScope &scope = *current_;
        if (node->a->kind == Node::variable) {
            const Place place = placeOf(node->a->name);
            // set s to s & x: the text grows where it is.
            if (node->b->kind == Node::binary && node->b->op == Node::join) {
                std::vector<const Node *> parts;
                const Node *first = node->b;
                for (; first->kind == Node::binary && first->op == Node::join; first = first->a)
                    parts.push_back(first->b);
                if (first->kind == Node::variable && first->name == node->a->name &&
                    (place.kind == Place::local || place.kind == Place::slot)) {
                    std::vector<int> operands;
                    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
                        operands.push_back(operandApart(*part, place));
                    at(node->b);
                    // All at once is what the joined lists of a failing statement would need; text can't fail half-way.
                    for (const int operand : operands) {
                        if (place.kind == Place::local)
                            emit(Op::join, place.a, place.a, operand);
                        else
                            emit(Op::joinSlot, operand, place.a, place.b);
                    }
                    if (keeps)
                        expression(node->a, scope.result);
                    return;
                }
            }
            if (place.kind == Place::local) {
                // What a call gives may be nothing, and nothing can't be assigned.
                const bool calls = node->b->kind == Node::call || node->b->kind == Node::labelledCall ||
                                   node->b->kind == Node::command;
                const int operand = expression(node->b, calls ? -1 : place.a);
                if (operand != place.a) {
                    at(node->b);
                    emit(Op::move, place.a, operand, 0);
                }
                if (keeps)
                    emit(Op::move, scope.result, place.a, 0);
                return;
            }
        }
        const int operand = expression(node->b);
        assign(node->a, operand);
        if (keeps) {
            at(node);
            emit(Op::move, scope.result, operand, 0);
        }
    }

    /// An operand that is not the variable that is about to change.
    int operandApart(const Node *node, const Place &place)
    {
        int operand = expression(node);
        if (place.kind == Place::local && operand == place.a) {
            const int apart = temporary();
            emit(Op::move, apart, operand, 0);
            operand = apart;
        }
        return operand;
    }

    void trial(const Node *node, bool last)
    {
        FunctionScope &scope = *current_;
        const int base = temporaries(6);
        emit(Op::beginTry, base + 5, 0, 0);
        const size_t from = here();
        branch(node->a, last);
        const size_t to = here();
        const size_t over = jump();
        function().tries.push_back({uint32_t(from), uint32_t(to), uint32_t(here()), int16_t(base)});
        if (node->b) {
            if (const Node *number = node->kids[1]; number && number->kind != Node::variable) {
                at(number);
                emit(Op::testEqual, base + 1, expression(number), 0);
                const size_t others = jump(), caught = jump();
                land(others);
                emit(Op::fail, base, 0, 0);
                land(caught);
            }
            for (int i = 0; i < 5; ++i) {
                if (const Node *pattern = node->kids[size_t(i)]; pattern && pattern->kind == Node::variable) {
                    const Place place = placeOf(pattern->name);
                    if (place.kind == Place::local)
                        emit(Op::moveRaw, place.a, base + i, 0);
                    else
                        assign(pattern, base + i);
                }
            }
            branch(node->b, last);
        } else if (last || scope.usesResult) {
            emit(Op::none, scope.result, 0, 0);
        }
        land(over);
    }

    Heap &heap_;
    Program *program_;
    bool keepsVariables_ = false;
    std::set<Name> shared_;
    ScriptScope *root_ = nullptr;
    FunctionScope *current_ = nullptr;
    Range range_;
    int depth_ = 0;
};

}  // namespace

Program *compile(const Tree &tree, std::string_view source, Heap &heap, Program *context, bool keepsVariables)
{
    return Compiler(heap, source).run(tree.root, context, keepsVariables);
}

}  // namespace tarvik::osa
