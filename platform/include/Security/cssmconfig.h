/// \file
/// Basic types of the Common Security Services Manager (The Open Group, C914), for a 64-bit process.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef uint8_t uint8;
typedef uint16_t uint16;
typedef uint32_t uint32;
typedef uint64_t uint64;
typedef int8_t sint8;
typedef int16_t sint16;
typedef int32_t sint32;
typedef int64_t sint64;

typedef intptr_t CSSM_INTPTR;
typedef size_t CSSM_SIZE;

/// Calling convention of the interface's functions: the C one.
#define CSSMAPI
