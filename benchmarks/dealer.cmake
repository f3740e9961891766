tamarin_bench(dealer SOURCES dealer_bench.cpp)
target_compile_definitions(bench_dealer PRIVATE TAMARIN_PROGRAM="$<TARGET_FILE:tamarin>")
add_dependencies(bench_dealer tamarin)
