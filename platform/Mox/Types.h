// The platform's fixed-width integer names. Function texts in assertion
// messages use them ("U16 vlanIdToFloodSet(U32)"), so declarations do too.
#pragma once

#include <cstdint>

typedef std::uint8_t U8;
typedef std::uint16_t U16;
typedef std::uint32_t U32;
typedef std::uint64_t U64;
typedef std::int32_t S32;
