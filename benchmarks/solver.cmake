tamarin_bench(solver SOURCES solver_bench.cpp USES training)
