// Marks what libvorn.so exports. Everything else is hidden: the library is
// built with -fvisibility=hidden and a version script.
#pragma once

// Puts the declaration it marks into libvorn.so's dynamic symbol table.
#define VORN_EXPORT __attribute__((visibility("default")))
