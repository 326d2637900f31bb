/// \file
/// The plain-text log of the network layer: one line a message, in "tarvik-logs/log.txt" in the temporary
/// folder.
///
///     Utils::LogMessage("curlerrcode:", 7);
///     -> Sun Nov 22 22:37:03 2026  Message: curlerrcode: ErrorCode: 7
///
/// The folder is the switch: while it exists, messages are written; the toolkit never makes it. Times are in
/// UTC. A line is one append to the file, so lines of several threads and processes never mix; the file is
/// opened and closed for each of them and may be removed at any time. A failure is silent. Thread: any.
#pragma once
#include <stdint.h>

#ifdef __cplusplus
#include <Tarvik/text/WideString.h>

#include <string>

namespace Utils {

/// The log's path.
std::string GetLogFilename();
/// Whether the log's folder exists. As `DirExists`, it leaves the process's working directory there when it
/// does.
bool IsLoggingOn();

/// Writes up to the first NUL of the message, and the code in decimal. A wide message is written in UTF-8, as
/// many whole characters of it as fit into 1023 bytes.
void LogMessage(const std::string &message);
void LogMessage(const std::string &message, int32_t code);
void LogMessage(const wstring &message);
void LogMessage(const wstring &message, int32_t code);

}  // namespace Utils

/// The procedural entry to the log: without effect, kept so that callers of it link and run.
extern "C" {
void InitializeLogWriter(void);
void CreateLogFolder(void);
void WriteMessageLog(const char *message);
void WriteMessageLogStr(const char *message, const char *text);
}

#endif
