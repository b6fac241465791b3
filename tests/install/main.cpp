// A program of another project that uses the installed library.
#include <Vorn/VornCommonUtils.h>
#include <cstdio>
int main() { std::printf("%u\n", Hardware::Vorn::lagIdToSysAggrPortId(Hardware::Vorn::fapTypeArad, Hardware::Vorn::LagId(5))); }
