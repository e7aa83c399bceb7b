#ifndef VANTIX_BENCH_BENCHMARKS_H
#define VANTIX_BENCH_BENCHMARKS_H

#include <string>

namespace VantixBench {

// Counts the QObjects of one start per platform; the start-up baselines build as many.
void probeStartObjects();
long objectsPerStart(int platform);

void registerStartupBenchmarks();
void registerCommandBenchmarks();
void registerHotplugBenchmarks();
void registerIdleBenchmarks();
void registerControlBenchmarks();
void registerRunnerBenchmarks();
void registerClientBenchmarks();

// Modes in which this program runs as a child of itself.
/// @p argc and @p argv are the arguments after the mode.
int runFirstStartChild(const std::string &mode, int argc, char *argv[]);
int runIdleChild(const std::string &mode);

} // namespace VantixBench

#endif
