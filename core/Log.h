/// \file
/// The toolkit's one diagnostic channel: every failure path reports here, with its function and line.
///
///     LogCore("-[DiskImage mount]", __LINE__, "unexpected exception: name[%@] reason[%@]", name, reason);
///     -> one record in the system log: "-[DiskImage mount]:200: unexpected exception: name[...] reason[...]"
///
/// Each message is one record of the system log (RFC 3164, through syslog(3), as it comes: no openlog), stamped with
/// one process-wide priority. The priority is a stamp, not a threshold: every message that the hook lets through is
/// written. On a system older than 10.0, and when the system's version can't be read, a modal caution alert takes the
/// log's place.
///
/// Nothing here fails its caller or raises. Thread: any (the alert: main only); priority and hook are plain words,
/// read without a lock.
#pragma once
#include <CoreFoundation/CFBase.h>

#include <stdarg.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Sees each finished message; false drops it. Function and message are never null.
typedef Boolean (*LogPreprocessProc)(const char *function, unsigned long line, const char *message);

/// The priority word of every message; 3 (LOG_ERR, default facility) at first.
int32_t LogGetPriority(void);
/// Sets it, untested; later messages carry it.
void LogSetPriority(int32_t priority);
/// Installs the hook; null removes it.
void SetLogPreprocess(LogPreprocessProc preprocess);

/// Formats and logs. `format` is UTF-8 in the platform's string-formatting dialect: printf's conversions, and `%@`
/// for an object's description. A null or non-UTF-8 format gives "<NULL>"; a null function "<unknown function>".
void LogCore(const char *function, unsigned long line, const char *format, ...);
/// The same with the arguments in a list. A null list gives "<NULL>".
void LogCorev(const char *function, unsigned long line, const char *format, va_list arguments);
/// Logs a finished text; percent signs in it stand for themselves.
void LogString(const char *function, unsigned long line, const char *message);
/// Logs a program's arguments: "argc=03", then "argv[00]=..." each in a record of its own. Null `argv`: the count only.
void LogMainArguments(int argc, char **argv);

/// The log's formatter: UTF-8 text in a new zero-terminated buffer that the caller frees with `free`.
/// Null for a null or non-UTF-8 format, a null list, a result without a UTF-8 form, or no memory.
char *StringAllocWithFormatAndArguments(const char *format, va_list arguments);

#ifdef __cplusplus
}
#endif
