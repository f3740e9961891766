// The k-element combinations of n bytes, in lexicographic order of their positions.
#pragma once

class combinator {
public:
    // Copies the n elements. 0 <= k <= n.
    combinator(unsigned char* elements, int n, int k);
    virtual ~combinator();
    combinator(const combinator&) = delete;
    combinator& operator=(const combinator&) = delete;

    // Moves to the first combination (the first call after construction or reset) or the next one;
    // false when there is none left.
    bool next();

    // The k elements of the combination that next() moved to. The array belongs to the combinator
    // and is overwritten by the next call, so the caller may sort or permute it in place.
    unsigned char* getCurrent();

    // Starts again.
    void reset();

private:
    int n;
    int k;
    unsigned char* elements;
    unsigned char* current;
    int* indices; // positions into elements, ascending
    bool first;
};
