#include <Tarvik/Tarvik.h>

#include <iostream>

int main()
{
    SetLogPreprocess([](const char *function, unsigned long line, const char *message) -> Boolean {
        std::cout << function << ':' << line << ": " << message << '\n';
        return false;  // seen here, not written to the system log
    });
    LogCore("main", 7, "version %04x, %s", GestaltSystemVersion(), "from C++");
}
