/// \file
/// A std::function as an instance variable: g++ can't encode its type there, so this holds it behind a plain pointer.
#pragma once
#include <utility>

template <class Function>
class Closure {
public:
    Closure() = default;
    ~Closure() { delete function(); }
    Closure(const Closure &) = delete;
    Closure &operator=(const Closure &) = delete;
    Closure &operator=(Function function)
    {
        delete static_cast<Function *>(
            std::exchange(function_, function ? new Function(std::move(function)) : nullptr));
        return *this;
    }
    explicit operator bool() const { return function_ != nullptr; }
    template <class... Arguments>
    auto operator()(Arguments... arguments) const
    {
        return (*function())(arguments...);
    }
    /// Hands the function over: it may be what ends this object.
    Function take()
    {
        Function taken = function_ ? std::move(*function()) : Function();
        *this = Function();
        return taken;
    }

private:
    Function *function() const { return static_cast<Function *>(function_); }
    void *function_ = nullptr;
};
