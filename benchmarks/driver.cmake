tamarin_bench(driver SOURCES driver_bench.cpp USES driver dealer)
