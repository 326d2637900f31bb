/// \file
/// The consistency check of the portable layer. On in every build; it reports
///
///     FILE:LINE: failed assertion `EXPRESSION'
///
/// on standard error and aborts. (The C library's own macro prints another text.)
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
/// Reports and aborts; does not return.
void TarvikAssertionFailed(const char *file, unsigned line, const char *expression) __attribute__((noreturn));
#ifdef __cplusplus
}
#endif

/// Goes on when the expression holds; reports under another file name than the source's own when one is given.
#define TARVIK_ASSERT_IN(file, expression)                                                                   \
    ((expression) ? (void)0 : TarvikAssertionFailed(file, __LINE__, #expression))
#define TARVIK_ASSERT(expression) TARVIK_ASSERT_IN(__FILE__, expression)
