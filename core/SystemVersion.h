/// \file
/// The running system's version.
#pragma once
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The packed version that the platform's "sysv" selector gives: BCD 0xMMmb, 0x1049 for 10.4.9.
/// Looked up once; 0 when the lookup fails, and the next call then tries again.
/// Thread: any.
uint32_t GestaltSystemVersion(void);

#ifdef __cplusplus
}
#endif
