#include "support/tree_paths.h"

namespace tamarin::test {

std::string inTree(const std::string& name) {
    return TAMARIN_SOURCE_DIR "/" + name;
}

std::string inBuild(const std::string& name) {
    return TAMARIN_BINARY_DIR "/" + name;
}

} // namespace tamarin::test
