/// \file
/// Runs compiled scripts: the loop over the instructions, and what the values can do.
#pragma once
#include "Code.h"
#include "ScriptErrors.h"
#include "TextOperations.h"
#include "Values.h"
#include "Vocabulary.h"

#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace tarvik::osa {

class FileAccess;
class Machine;

/// A command with its parameters.
struct Invocation {
    const Site &site;
    const Value &target, &direct;
    const Value *values;  // as site.codes

    const Value *parameter(uint32_t code) const
    {
        for (size_t i = 0; i < site.codes.size(); ++i) {
            if (site.codes[i] == code)
                return &values[i];
        }
        return nullptr;
    }
    bool flag(uint32_t code, bool otherwise) const
    {
        const Value *value = parameter(code);
        return value ? value->is(Kind::boolean) && value->boolean() : otherwise;
    }
};

/// What the machine asks of the world around it. Every function may throw a ScriptError.
class Host {
public:
    virtual ~Host() = default;
    /// Asked before every command that is no application's; throws where it is not wanted.
    virtual void permit(const Command &) {}
    /// Asked now and then: an error number stops the script.
    virtual int32_t poll() { return 0; }
    virtual void log(const std::string &text) = 0;
    /// The version of the language, and the name of this program.
    virtual std::string programName() = 0;
    virtual std::string posixPath(const std::string &hfs) = 0;
    virtual std::string hfsPath(const std::string &posix) = 0;
    /// The folder of a four-character type, e.g. 'desk'; empty: there is none.
    virtual std::string folder(uint32_t type, bool local, bool create) = 0;
    /// display dialog, display alert, the clipboard ...: what needs a user, by its command.
    virtual Value interact(Machine &machine, const Invocation &invocation) = 0;
    /// An event for an application; `target` is an application.
    virtual Value sendEvent(Machine &machine, const std::string &application, uint32_t eventClass,
                            uint32_t eventID, const Invocation &invocation) = 0;
    /// `tell application "x" to f(1)`: a subroutine of an application.
    virtual Value callApplication(Machine &machine, const std::string &application, Name handler,
                                  const std::vector<Value> &arguments) = 0;
    /// A property of an application, or of one of its elements.
    virtual Value applicationProperty(Machine &machine, const Value &place) = 0;
    virtual void setApplicationProperty(Machine &machine, const Value &place, const Value &value) = 0;
    /// Compiles and runs source text; loads a script file. `parameters` for its `run` handler: a list, or null.
    virtual Value runScript(Machine &machine, const Value &source, const Value *parameters) = 0;
    virtual Value loadScript(Machine &machine, const std::string &path) = 0;
};

class Machine {
public:
    Machine(Heap &heap, Host &host, const Vocabulary &vocabulary);
    ~Machine();

    Heap &heap;
    Host &host;
    const Vocabulary &vocabulary;
    uint32_t considering = Considering::kDefault;
    uint32_t timeLimit = 0;  // ticks that applications have for their answers; 0: the usual ones
    Value delimiters;        // AppleScript's text item delimiters
    std::mt19937_64 random;

    /// A new root script of a program, its properties set.
    Value instantiate(Program *program);
    /// Fills the properties of a root that continues another one's slots.
    void continueContext(Value &root, Program *program);
    /// Calls a handler; no value where it gives none. Throws ScriptError.
    Value call(const Value &script, Name handler, std::vector<Value> arguments);
    bool responds(const Value &script, Name handler) const
    {
        return findHandler(script.script(), handler).first != nullptr;
    }
    Value execute(const Function &function, const Value &script, const Value &me,
                  std::vector<Value> arguments);

    // --- what values can do (Operators.cpp)
    void arithmetic(Op op, Value &out, const Value &left, const Value &right);
    void joinInto(Value &front, const Value &back);
    Value joined(const Value &left, const Value &right);
    bool equal(const Value &left, const Value &right, int depth = 0);
    int order(const Value &left, const Value &right);  // throws where there is no order
    bool contains(const Value &whole, const Value &part);
    bool startsWith(const Value &whole, const Value &part);
    bool endsWith(const Value &whole, const Value &part);
    Value copied(const Value &value, int depth = 0);

    // --- coercions (Coercions.cpp)
    Value coerced(const Value &value, uint32_t type);
    /// An alias of what is there; a folder's path ends with a slash.
    Value alias(std::string path);
    bool truth(const Value &value);
    int64_t whole(const Value &value);
    double number(const Value &value);
    Value asNumber(const Value &value, const char *wanted = "number");
    Value asText(const Value &value, int depth = 0);
    /// -1700: Can’t make VALUE into type TYPE.
    [[noreturn]] void cantMake(const Value &value, std::string_view type) const;
    std::string textOf(const Value &value) { return utf8(asText(value)); }
    std::string path(const Value &value);  // POSIX path of a file or text

    // --- places (Elements.cpp, Properties.cpp)
    Value get(const Specifier &spec, const Value &container, const Value &from, const Value &to);
    void set(const Specifier &spec, const Value &container, const Value &from, const Value &to,
             const Value &value);
    Value item(const Value &container, const Value &index);
    Value property(const Value &container, Name name);
    void setProperty(const Value &container, Name name, const Value &value);
    Value contentsOf(const Value &value, int depth = 0);  // what a reference leads to
    size_t countOf(const Value &value);

    /// Asks the host whether to go on; throws the error that stops the script.
    void poll();
    /// Ends the script with that error, which no `try` holds up.
    [[noreturn]] void stop(int32_t number);

    // --- commands (StandardAdditions.cpp)
    FileAccess &files();
    Value command(const Invocation &invocation);

    // --- display (Display.cpp)
    /// As a script would write it; for people: without the quotes around text.
    std::string display(const Value &value, int depth = 0) const;
    std::string displayName(Name name) const;

private:
    struct Frame {
        const Function *function;
        const Instruction *pc;
        Value *registers;
        Value script, me;
        Value *result;
        uint32_t considering, timeLimit;
    };
    /// What holds for a stretch of the script, as one number.
    int64_t held() const { return int64_t(uint64_t(timeLimit) << 32 | considering); }
    void hold(int64_t kept)
    {
        considering = uint32_t(kept);
        timeLimit = uint32_t(uint64_t(kept) >> 32);
    }
    Value interpret(size_t bottom);
    bool unwind(ScriptError &error, size_t bottom);
    void pushFrame(const Function &function, const Value &script, const Value &me, Value *registers,
                   Value *result);
    void popFrame();
    [[noreturn]] void undefinedOperand(const Frame &frame, int operand);
    const Value &defined(const Frame &frame, int operand, const Value &value);
    std::pair<const Function *, ScriptObject *> findHandler(ScriptObject *script, Name name) const;
    void enter(const Site &site, const Function &function, const Value &owner, const Value &me,
               Value *arguments, Value *result);
    void matchArguments(const Site &site, const Function &function, Value *arguments);
    ScriptObject *outward(const Frame &frame, int levels) const;
    void callSite(Frame &frame, Op op, const Instruction &instruction);
    Value specified(uint32_t what, const Value &of);

    Value elements(const Value &container, const Specifier &spec);
    Value textElement(const Specifier &spec, const Value &text, const Value &from, const Value &to);
    Value listElement(const Specifier &spec, const Value &list, const Value &from, const Value &to);
    [[noreturn]] void cantGet(const Specifier &spec, const Value &container, const Value &from,
                              const Value &to) const;
    std::string describe(const Specifier &spec, const Value &from, const Value &to) const;
    Value refer(const Site &site, const Value &container, const Value &from, const Value &to);

    std::vector<Frame> frames_;
    Value *stack_;
    std::unique_ptr<FileAccess> files_;
    int32_t ticks_;
    int nesting_ = 0;
};

// Dates.cpp
int64_t currentSeconds();
std::optional<int64_t> parseDate(std::string_view text);
std::string dateText(int64_t seconds);  // "Monday, November 23, 2026 at 1:05:00 AM"
std::string dateOnly(int64_t seconds);
std::string shortDate(int64_t seconds);
std::string timeText(int64_t seconds);
struct DateParts {
    int64_t year;
    int month, day, hour, minute, second, weekday;  // month 1 ..., weekday 0: Sunday
};
DateParts partsOf(int64_t seconds);
int64_t secondsOf(const DateParts &parts);

/// January: 1, Sunday: 1.
std::optional<int64_t> numberOfConstant(uint32_t code);

std::string numberText(double number);  // "1.5", "1.0E+10"
/// A number, as a script writes it; nothing when it is none.
std::optional<Value> parseNumber(std::string_view text);

}  // namespace tarvik::osa
