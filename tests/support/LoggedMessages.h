// What is logged while it lives, instead of the system log: "FUNCTION:LINE: MESSAGE". One at a time.
#pragma once
#include <Tarvik/core/Log.h>

#include <mutex>
#include <string>
#include <vector>

class LoggedMessages {
public:
    LoggedMessages() { SetLogPreprocess(&keep); }
    ~LoggedMessages()
    {
        SetLogPreprocess(nullptr);
        kept().clear();
    }
    LoggedMessages(const LoggedMessages &) = delete;
    LoggedMessages &operator=(const LoggedMessages &) = delete;

    size_t count() const { return kept().size(); }
    const std::string &operator[](size_t index) const { return kept().at(index); }

private:
    static std::vector<std::string> &kept()
    {
        static std::vector<std::string> messages;
        return messages;
    }
    static Boolean keep(const char *function, unsigned long line, const char *message)
    {
        static std::mutex mutex;
        std::lock_guard lock(mutex);
        kept().push_back(std::string(function) + ":" + std::to_string(line) + ": " + message);
        return false;
    }
};
