/// \file
/// What a script computes with. A value is a tag and a number, or a counted object: text, list, record, date, script ...
///
/// Text never changes (but for the one that its only owner appends to); lists, records, dates and scripts are shared by those who
/// hold them, as `set` demands. Objects belong to a Heap, which frees circles of them, too. Thread: one at a time for each heap.
#pragma once
#include "Names.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvik::osa {

class Heap;
struct Text;
struct List;
struct Record;
struct Date;
struct ScriptObject;
struct Reference;
struct FileObject;
struct Data;
struct HandlerObject;
struct Application;

enum class Kind : uint8_t {
    none,     // no value at all
    missing,  // missing value
    boolean,
    integer,
    real,
    type,      // a class: its four-character code
    constant,  // an enumerator: its four-character code
    // from here on: objects
    text,
    list,
    record,
    date,
    script,
    reference,
    file,
    data,
    handler,
    application,
};

struct Object {
    uint32_t references = 1;
    Kind kind;
    Heap *heap;
    Object(Kind kind, Heap *heap) : kind(kind), heap(heap) {}
    Object(const Object &) = delete;
};

void destroy(Object *object);

class Value {
public:
    Value() : kind_(Kind::none), integer_(0) {}
    Value(const Value &other) : kind_(other.kind_), integer_(other.integer_) { retain(); }
    Value(Value &&other) noexcept : kind_(other.kind_), integer_(other.integer_) { other.kind_ = Kind::none; }
    ~Value() { release(); }
    Value &operator=(const Value &other)
    {
        Value copy(other);
        return *this = std::move(copy);
    }
    Value &operator=(Value &&other) noexcept
    {
        if (this != &other) {
            // The old value last: freeing it may lead back here.
            Value old(std::move(*this));
            kind_ = other.kind_;
            integer_ = other.integer_;
            other.kind_ = Kind::none;
        }
        return *this;
    }

    static Value of(bool truth) { return Value(Kind::boolean, truth); }
    static Value of(int64_t number) { return Value(Kind::integer, number); }
    static Value of(double number)
    {
        Value value(Kind::real, 0);
        value.real_ = number;
        return value;
    }
    static Value missing() { return Value(Kind::missing, 0); }
    static Value type(uint32_t code) { return Value(Kind::type, code); }
    static Value constant(uint32_t code) { return Value(Kind::constant, code); }
    /// Takes the reference that the caller holds.
    static Value adopt(Object *object)
    {
        Value value;
        value.kind_ = object->kind;
        value.object_ = object;
        return value;
    }
    static Value retain(Object *object)
    {
        ++object->references;
        return adopt(object);
    }

    Kind kind() const { return kind_; }
    bool is(Kind kind) const { return kind_ == kind; }
    bool isNumber() const { return kind_ == Kind::integer || kind_ == Kind::real; }
    bool isObject() const { return kind_ >= Kind::text; }
    explicit operator bool() const { return kind_ != Kind::none; }

    bool boolean() const { return integer_ != 0; }
    int64_t integer() const { return integer_; }
    double real() const { return real_; }
    double number() const { return kind_ == Kind::integer ? double(integer_) : real_; }
    uint32_t code() const { return uint32_t(integer_); }
    Object *object() const { return object_; }
    Text *text() const { return reinterpret_cast<Text *>(object_); }
    List *list() const { return reinterpret_cast<List *>(object_); }
    Record *record() const { return reinterpret_cast<Record *>(object_); }
    Date *date() const { return reinterpret_cast<Date *>(object_); }
    ScriptObject *script() const { return reinterpret_cast<ScriptObject *>(object_); }
    Reference *reference() const { return reinterpret_cast<Reference *>(object_); }
    FileObject *file() const { return reinterpret_cast<FileObject *>(object_); }
    Data *data() const { return reinterpret_cast<Data *>(object_); }
    HandlerObject *handler() const { return reinterpret_cast<HandlerObject *>(object_); }
    Application *application() const { return reinterpret_cast<Application *>(object_); }

    /// In place, for the loops of the machine: the register holds no object.
    void setInteger(int64_t number)
    {
        kind_ = Kind::integer;
        integer_ = number;
    }
    void put(int64_t number)
    {
        release();
        setInteger(number);
    }
    void put(double number)
    {
        release();
        kind_ = Kind::real;
        real_ = number;
    }
    void put(bool truth)
    {
        release();
        kind_ = Kind::boolean;
        integer_ = truth;
    }
    void clear()
    {
        if (isObject()) {
            Value old(std::move(*this));
        }
        kind_ = Kind::none;
    }
    /// Replaces the object by another one without counting: the caller has dealt with the old one.
    void replaceObject(Object *object) { object_ = object; }

private:
    Value(Kind kind, int64_t number) : kind_(kind), integer_(number) {}
    void retain() const
    {
        if (isObject())
            ++object_->references;
    }
    void release()
    {
        if (isObject() && --object_->references == 0)
            destroy(object_);
    }

    Kind kind_;
    union {
        int64_t integer_;
        double real_;
        Object *object_;
    };
};
static_assert(sizeof(Value) == 16);

/// Text: one byte for each character while all of them are below U+0100, else four. So every character is found at once.
struct Text : Object {
    uint32_t length;    // in characters
    uint32_t capacity;  // in bytes
    uint8_t width;      // 1 or 4

    const uint8_t *narrow() const { return reinterpret_cast<const uint8_t *>(this + 1); }
    const char32_t *wide() const { return reinterpret_cast<const char32_t *>(this + 1); }
    uint8_t *narrow() { return reinterpret_cast<uint8_t *>(this + 1); }
    char32_t *wide() { return reinterpret_cast<char32_t *>(this + 1); }
    char32_t operator[](size_t index) const { return width == 1 ? narrow()[index] : wide()[index]; }
    Text(Heap *heap, uint32_t length, uint8_t width)
        : Object(Kind::text, heap), length(length), capacity(0), width(width)
    {
    }
};
static_assert(sizeof(Text) % alignof(char32_t) == 0);

/// What may be part of a circle; the heap knows them all.
struct Container : Object {
    Container *before, *behind;
    uint32_t inner = 0;  // for the collector
    bool reached = false;
    Container(Kind kind, Heap *heap);
    ~Container();
};

struct List : Container {
    std::vector<Value> items;
    size_t counted = 0;  // bytes that the heap counts for it
    explicit List(Heap *heap) : Container(Kind::list, heap) {}
};

struct Record : Container {
    std::vector<std::pair<Name, Value>> fields;
    explicit Record(Heap *heap) : Container(Kind::record, heap) {}
    Value *find(Name name)
    {
        for (auto &[field, value] : fields) {
            if (field == name)
                return &value;
        }
        return nullptr;
    }
    void set(Name name, Value value)
    {
        if (Value *known = find(name))
            *known = std::move(value);
        else
            fields.emplace_back(name, std::move(value));
    }
};

/// A moment in local time: seconds since 1970-01-01 00:00 on the wall clock.
struct Date : Object {
    int64_t seconds;
    Date(Heap *heap, int64_t seconds) : Object(Kind::date, heap), seconds(seconds) {}
};

struct Prototype;
struct Function;

struct ScriptObject : Container {
    const Prototype *prototype;
    std::vector<Value> slots;  // properties and globals, as the prototype numbers them
    Value outer;               // the script that this one stands in
    Value parent;              // none: the outer one
    ScriptObject(Heap *heap, const Prototype *prototype);
    ~ScriptObject();
};

struct HandlerObject : Container {
    const Function *function;
    Value owner;
    HandlerObject(Heap *heap, const Function *function, Value owner)
        : Container(Kind::handler, heap), function(function), owner(std::move(owner))
    {
    }
};

struct FileObject : Object {
    bool isAlias;
    std::string path;  // POSIX
    FileObject(Heap *heap, bool isAlias, std::string path)
        : Object(Kind::file, heap), isAlias(isAlias), path(std::move(path))
    {
    }
};

struct Data : Object {
    uint32_t type;
    std::string bytes;
    Data(Heap *heap, uint32_t type, std::string bytes)
        : Object(Kind::data, heap), type(type), bytes(std::move(bytes))
    {
    }
};

struct Application : Object {
    std::string name;  // empty: the current application
    Application(Heap *heap, std::string name) : Object(Kind::application, heap), name(std::move(name)) {}
};

/// `item 2 of x`, `every word of x`, `total of x`: a place in something, kept unresolved.
struct Specifier {
    enum Form : uint8_t { property, index, every, range, middle, some, named, id, beginning, end, variable };
    Form form = property;
    Name name = 0;      // of the property, or of the class of the elements (singular)
    uint32_t code = 0;  // the class of the elements
};

struct Reference : Container {
    Specifier specifier;
    Value container;
    Value from, to;  // an index, or both ends of a range
    Reference(Heap *heap, const Specifier &specifier, Value container)
        : Container(Kind::reference, heap), specifier(specifier), container(std::move(container))
    {
    }
};

/// Makes and frees the objects of one scripting component.
class Heap {
public:
    Heap();
    ~Heap();
    Heap(const Heap &) = delete;

    Names names;

    Value text(std::string_view utf8);
    Value latin(std::string_view bytes);  // one character for each byte
    Value list(std::vector<Value> items = {});
    Value record() { return Value::adopt(new Record(this)); }
    Value date(int64_t seconds) { return Value::adopt(new Date(this, seconds)); }
    Value file(bool isAlias, std::string path)
    {
        return Value::adopt(new FileObject(this, isAlias, std::move(path)));
    }
    Value data(uint32_t type, std::string bytes)
    {
        return Value::adopt(new Data(this, type, std::move(bytes)));
    }
    Value application(std::string name) { return Value::adopt(new Application(this, std::move(name))); }
    Value script(const Prototype *prototype) { return Value::adopt(new ScriptObject(this, prototype)); }
    Value handler(const Function *function, Value owner)
    {
        return Value::adopt(new HandlerObject(this, function, std::move(owner)));
    }
    Value reference(const Specifier &specifier, Value container)
    {
        return Value::adopt(new Reference(this, specifier, std::move(container)));
    }
    /// A shared text of one character below U+0100.
    Value character(uint8_t code) { return singles_[code]; }
    const Value &emptyText() const { return empty_; }

    /// Frees circles that nothing outside refers to any more.
    void collect();
    /// The same, when there are many more containers than after the last time.
    void collectSometimes();

    /// How many bytes of text and list items there may be: more is error -108.
    size_t limit = size_t(2) << 30;
    size_t used() const { return used_; }
    /// Throws the error when `bytes` more are too much.
    void grow(size_t bytes);
    /// The same for a list whose items have moved to a larger place, or are about to.
    void grow(List *list, size_t items)
    {
        if (items * sizeof(Value) > list->counted) {
            grow(items * sizeof(Value) - list->counted);
            list->counted = items * sizeof(Value);
        }
    }
    void shrink(size_t bytes) { used_ -= bytes < used_ ? bytes : used_; }

    /// Memory for an object of that many bytes, a multiple of 16, from what was freed lately. Null: there is none.
    void *recycled(size_t size)
    {
        Free &list = free_[size / 16 % kSizes];
        if (size >= kSizes * 16 || !list.first)
            return nullptr;
        void *memory = list.first;
        list.first = *static_cast<void **>(memory);
        --list.count;
        return memory;
    }
    /// Takes freed memory back for later; false: nobody keeps it.
    bool recycle(void *memory, size_t size)
    {
#ifdef __SANITIZE_ADDRESS__
        return (void)memory, (void)size, false;  // the sanitizer is to see what is used after its end
#else
        Free &list = free_[size / 16 % kSizes];
        if (size >= kSizes * 16 || size % 16 || list.count >= kMostFree)
            return false;
        *static_cast<void **>(memory) = list.first;
        list.first = memory;
        ++list.count;
        return true;
#endif
    }

private:
    friend struct Container;
    friend void destroy(Object *object);
    static constexpr size_t kSizes = 8, kMostFree = 65536;
    struct Free {
        void *first = nullptr;
        size_t count = 0;
    };
    Free free_[kSizes];
    Container *containers_ = nullptr;
    size_t containerCount_ = 0, nextCollection_ = 4096;
    size_t used_ = 0;
    std::vector<Object *> dying_;
    bool freeing_ = false;
    std::vector<Value> singles_;
    Value empty_;
};

}  // namespace tarvik::osa
