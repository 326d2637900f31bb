// A tool in the background, and our run loop until it has ended.
#pragma once
#include <Tarvik/Tarvik.h>

/// Starts the tool with the delegate and returns when it has ended. The delegate sees the output on another
/// thread.
void runInBackground(CommandTool *tool, id delegate);
