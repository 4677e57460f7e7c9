#include "benchmarks/Benchmarks.h"
void BenchmarkPrinterLoad() {}
