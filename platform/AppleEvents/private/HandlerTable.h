/// \file
/// Handlers by two four-character codes, each of which may be the wild card. Thread: any.
#pragma once
#include <Carbon/AEDataModel.h>

#include <mutex>
#include <optional>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

namespace tarvik::ae {

template <class Handler>
class HandlerTable {
public:
    void set(FourCharCode first, FourCharCode second, Handler handler)
    {
        std::unique_lock lock(mutex_);
        handlers_.insert_or_assign(key(first, second), handler);
    }
    template <class Condition>
    bool remove(FourCharCode first, FourCharCode second, Condition &&condition)
    {
        std::unique_lock lock(mutex_);
        const auto known = handlers_.find(key(first, second));
        if (known == handlers_.end() || !condition(known->second))
            return false;
        handlers_.erase(known);
        return true;
    }
    /// The one that was set for these very codes.
    std::optional<Handler> get(FourCharCode first, FourCharCode second) const
    {
        std::shared_lock lock(mutex_);
        const auto known = handlers_.find(key(first, second));
        return known == handlers_.end() ? std::nullopt : std::optional(known->second);
    }
    /// Those that may serve the codes, the most particular one first.
    std::vector<Handler> matching(FourCharCode first, FourCharCode second) const
    {
        std::shared_lock lock(mutex_);
        std::vector<Handler> found;
        if (handlers_.empty())
            return found;
        for (const uint64_t wanted : {key(first, second), key(first, typeWildCard), key(typeWildCard, second),
                                      key(typeWildCard, typeWildCard)})
            if (const auto known = handlers_.find(wanted); known != handlers_.end())
                found.push_back(known->second);
        return found;
    }

private:
    static uint64_t key(FourCharCode first, FourCharCode second) { return uint64_t(first) << 32 | second; }

    mutable std::shared_mutex mutex_;
    std::unordered_map<uint64_t, Handler> handlers_;
};

}  // namespace tarvik::ae
