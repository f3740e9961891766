tamarin_bench(eval SOURCES ${CMAKE_CURRENT_LIST_DIR}/eval_bench.cpp USES eval)
