// Figures that vorn_bench prints after the runs: the ratio of one benchmark's
// time per iteration to another's, measured in the same run, with a target.
#pragma once

#include <string>

namespace VornBench {

// Registers "numerator / denominator" to be printed, with the largest ratio
// that meets the target (0: reported, no target).
void ratio(const std::string& label, const std::string& numerator, const std::string& denominator,
           double target);

// The processor's model name, as /proc/cpuinfo gives it: the figures are
// this machine's.
std::string processor();

}  // namespace VornBench
