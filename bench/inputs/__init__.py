"""Where the benchmarks' messages come from: the same bytes on every machine."""
