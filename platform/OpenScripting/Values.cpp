#include "private/Values.h"

#include "private/Code.h"
#include "private/ScriptErrors.h"
#include "private/TextOperations.h"

#include <algorithm>

namespace tarvik::osa {

Container::Container(Kind kind, Heap *heap) : Object(kind, heap), before(nullptr), behind(heap->containers_)
{
    if (behind)
        behind->before = this;
    heap->containers_ = this;
    ++heap->containerCount_;
}

Container::~Container()
{
    (before ? before->behind : heap->containers_) = behind;
    if (behind)
        behind->before = before;
    --heap->containerCount_;
}

ScriptObject::ScriptObject(Heap *heap, const Prototype *prototype)
    : Container(Kind::script, heap), prototype(prototype)
{
    prototype->program->retain();
    slots.resize(prototype->slots.size());
}

ScriptObject::~ScriptObject() { prototype->program->release(); }

namespace {

void free(Object *object)
{
    switch (object->kind) {
    case Kind::list:
        object->heap->shrink(static_cast<List *>(object)->counted);
        delete static_cast<List *>(object);
        break;
    case Kind::record: delete static_cast<Record *>(object); break;
    case Kind::date: delete static_cast<Date *>(object); break;
    case Kind::script: delete static_cast<ScriptObject *>(object); break;
    case Kind::reference: delete static_cast<Reference *>(object); break;
    case Kind::file: delete static_cast<FileObject *>(object); break;
    case Kind::data: delete static_cast<Data *>(object); break;
    case Kind::handler: delete static_cast<HandlerObject *>(object); break;
    case Kind::application: delete static_cast<Application *>(object); break;
    default: break;
    }
}

/// Calls `visit` with each value that the container holds.
template <class Visit>
void visitContents(Container *container, Visit visit)
{
    switch (container->kind) {
    case Kind::list:
        for (Value &item : static_cast<List *>(container)->items)
            visit(item);
        break;
    case Kind::record:
        for (auto &[name, value] : static_cast<Record *>(container)->fields)
            visit(value);
        break;
    case Kind::script: {
        auto *script = static_cast<ScriptObject *>(container);
        for (Value &slot : script->slots)
            visit(slot);
        visit(script->outer);
        visit(script->parent);
        break;
    }
    case Kind::reference: {
        auto *reference = static_cast<Reference *>(container);
        visit(reference->container);
        visit(reference->from);
        visit(reference->to);
        break;
    }
    case Kind::handler: visit(static_cast<HandlerObject *>(container)->owner); break;
    default: break;
    }
}

bool isContainer(const Value &value)
{
    switch (value.kind()) {
    case Kind::list:
    case Kind::record:
    case Kind::script:
    case Kind::reference:
    case Kind::handler: return true;
    default: return false;
    }
}

Container *containerOf(const Value &value) { return static_cast<Container *>(value.object()); }

}  // namespace

void destroy(Object *object)
{
    Heap *heap = object->heap;
    if (object->kind == Kind::text) {
        const size_t size = static_cast<Text *>(object)->capacity + sizeof(Text);
        heap->shrink(size);
        if (!heap->recycle(object, size))
            std::free(object);
        return;
    }
    // A list of lists of lists ... is freed in a loop: however deep it is, the machine's own stack stays where it is.
    heap->dying_.push_back(object);
    if (heap->freeing_)
        return;
    heap->freeing_ = true;
    while (!heap->dying_.empty()) {
        Object *next = heap->dying_.back();
        heap->dying_.pop_back();
        free(next);
    }
    heap->freeing_ = false;
}

Heap::Heap()
{
    empty_ = Value::adopt(allocateText(this, 0, 1));
    for (unsigned code = 0; code < 256; ++code) {
        Text *text = allocateText(this, 1, 1);
        *text->narrow() = uint8_t(code);
        singles_.push_back(Value::adopt(text));
    }
}

Heap::~Heap()
{
    std::vector<Value> all;
    for (Container *container = containers_; container; container = container->behind)
        all.push_back(Value::retain(container));
    for (Value &value : all)
        visitContents(containerOf(value), [](Value &inner) { inner.clear(); });
    all.clear();
    singles_.clear();
    empty_ = Value();
    for (Free &list : free_) {
        while (void *memory = list.first) {
            list.first = *static_cast<void **>(memory);
            std::free(memory);
        }
    }
}

void Heap::collect()
{
    // A container is held from outside when more references lead to it than come from containers.
    for (Container *container = containers_; container; container = container->behind) {
        container->inner = 0;
        container->reached = false;
    }
    for (Container *container = containers_; container; container = container->behind)
        visitContents(container, [](Value &value) {
            if (isContainer(value))
                ++containerOf(value)->inner;
        });
    std::vector<Container *> path;
    const auto reach = [&](Container *container) {
        if (!container->reached) {
            container->reached = true;
            path.push_back(container);
        }
    };
    for (Container *container = containers_; container; container = container->behind) {
        if (container->references > container->inner)
            reach(container);
    }
    while (!path.empty()) {
        Container *container = path.back();
        path.pop_back();
        visitContents(container, [&](Value &value) {
            if (isContainer(value))
                reach(containerOf(value));
        });
    }
    std::vector<Value> lost;
    for (Container *container = containers_; container; container = container->behind) {
        if (!container->reached)
            lost.push_back(Value::retain(container));
    }
    for (Value &value : lost)
        visitContents(containerOf(value), [](Value &inner) { inner.clear(); });
    lost.clear();
    nextCollection_ = std::max<size_t>(4096, containerCount_ * 2);
}

void Heap::collectSometimes()
{
    if (containerCount_ > nextCollection_)
        collect();
}

Value Heap::list(std::vector<Value> items)
{
    auto *list = new List(this);
    list->items = std::move(items);
    Value value = Value::adopt(list);
    grow(list, list->items.size());
    return value;
}

void Heap::grow(size_t bytes)
{
    if (bytes > limit || used_ > limit - bytes)
        raise(error::outOfMemory, "Out of memory.");
    used_ += bytes;
}

Value Heap::latin(std::string_view bytes)
{
    if (bytes.size() == 1)
        return singles_[uint8_t(bytes[0])];
    Text *text = allocateText(this, bytes.size(), 1);
    std::memcpy(text->narrow(), bytes.data(), bytes.size());
    return Value::adopt(text);
}

}  // namespace tarvik::osa
