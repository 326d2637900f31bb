#include <Tarvik/core/Assert.h>

#include <cstdio>
#include <cstdlib>

void TarvikAssertionFailed(const char *file, unsigned line, const char *expression)
{
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", file, line, expression);
    std::abort();
}
