// Nothing: the target of the headers that test programs share (tests/CMakeLists.txt) needs a file.
