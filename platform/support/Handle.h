/// \file
/// One scoped handle for everything that must be closed or released.
///
/// A traits type names the handle's type, its empty value and the way to close it:
///
///     struct PipeTraits {
///         using Value = FILE *;
///         static Value empty() { return nullptr; }
///         static void close(Value pipe) { pclose(pipe); }
///     };
///     tarvik::Handle<PipeTraits> pipe(popen("date", "r"));
///
/// A Handle is moved, never copied, and closes at most once.
#pragma once
#ifdef __cplusplus

#include <unistd.h>

#include <utility>

namespace tarvik {

template <class Traits>
class Handle {
public:
    using Value = typename Traits::Value;

    Handle() = default;
    explicit Handle(Value value) : value_(value) {}
    Handle(Handle &&other) noexcept : value_(other.release()) {}
    Handle &operator=(Handle &&other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    ~Handle() { reset(); }

    Value get() const { return value_; }
    explicit operator bool() const { return value_ != Traits::empty(); }

    /// Gives up ownership: the caller closes the result.
    [[nodiscard]] Value release() { return std::exchange(value_, Traits::empty()); }
    /// Closes what is held and takes `value` in its place.
    void reset(Value value = Traits::empty())
    {
        Value old = std::exchange(value_, value);
        if (old != Traits::empty())
            Traits::close(old);
    }

private:
    Value value_ = Traits::empty();
};

struct FileDescriptorTraits {
    using Value = int;
    static Value empty() { return -1; }
    // Never retried on EINTR: on Linux the descriptor is gone even then.
    static void close(Value descriptor) { ::close(descriptor); }
};
/// A file descriptor; empty is -1.
using FileDescriptor = Handle<FileDescriptorTraits>;

}  // namespace tarvik
#endif
