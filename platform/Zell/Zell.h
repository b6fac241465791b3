// Zell: the platform's process helper.
#pragma once

namespace Zell {

// Runs `command` as a shell command line and returns its exit status, or a
// negative value when it cannot be run. The four numbers are the platform's
// descriptor and flag arguments; the library passes -1, -1, -2, -1 and they
// are accepted and ignored here.
int run(const char* command, int in = -1, int out = -1, int err = -2, int flags = -1);

// Replaces how commands are run (null: a real shell again). Tests install a
// runner that records the command lines.
using Runner = int (*)(const char* command, void* context);
void runnerIs(Runner runner, void* context) noexcept;

}  // namespace Zell
