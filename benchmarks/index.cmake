tamarin_bench(index SOURCES index_bench.cpp USES index)
