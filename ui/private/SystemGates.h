// The system versions at which the interface changes its ways.
#pragma once
#include <cstdint>

/// Up to 10.3 a table view hands out dragged rows as row numbers; from 10.4 on as an index set.
constexpr uint32_t kLastSystemDraggingRowNumbers = 0x103F;
