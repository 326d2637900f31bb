/// \file
/// What the toolkit's interface shares.
#pragma once
#include <CoreFoundation/CFBase.h>

#include <stdint.h>

/// "Not found" of every index that the toolkit answers: the largest signed 32-bit value, in an unsigned 32-bit
/// result. GNUstep's own NSNotFound is larger in a 64-bit process; compare the toolkit's results with this one.
enum { kTarvikNotFound = 0x7FFFFFFF };
