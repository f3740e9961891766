tamarin_bench(game SOURCES game_bench.cpp USES game)
