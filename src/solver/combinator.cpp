#include "solver/combinator.h"

#include <algorithm>

combinator::combinator(unsigned char* elements_, int n_, int k_)
    : n(n_), k(k_), elements(new unsigned char[static_cast<unsigned>(n_)]),
      current(new unsigned char[static_cast<unsigned>(k_)]),
      indices(new int[static_cast<unsigned>(k_)]) {
    std::copy_n(elements_, n, elements);
    reset();
}

combinator::~combinator() {
    delete[] elements;
    delete[] current;
    delete[] indices;
}

void combinator::reset() {
    for (int i = 0; i < k; ++i)
        indices[i] = i;
    first = true;
}

bool combinator::next() {
    if (first) {
        first = false;
        return true;
    }
    if (k == 0)
        return false; // the empty combination is the only one
    int i = k - 1;
    ++indices[i];
    while (i > 0 && indices[i] >= i + n - k + 1) {
        --i;
        ++indices[i];
    }
    if (indices[0] > n - k)
        return false;
    for (int j = i + 1; j < k; ++j)
        indices[j] = indices[j - 1] + 1;
    return true;
}

unsigned char* combinator::getCurrent() {
    for (int i = 0; i < k; ++i)
        current[i] = elements[indices[i]];
    return current;
}
