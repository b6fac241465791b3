// A bounded formatter for driver command texts.
//
// The command path is one system call; glibc's vsnprintf costs as much as a
// third of it. This formatter handles the conversions the commands use (%s %c
// %d %i %u %o %x %X with the 0 flag, a width and the h, hh, l and ll length
// modifiers) and writes exactly the bytes snprintf would, with the same
// truncation and result. Anything else in a format is handed to vsnprintf.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace Hardware::Vorn::dma {

// vsnprintf(buf, size, fmt, ap), same bytes and result.
int formatCommandV(char* buf, std::size_t size, const char* fmt, va_list ap);

// snprintf(buf, size, fmt, ...), same bytes and result.
int formatCommand(char* buf, std::size_t size, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace Hardware::Vorn::dma
