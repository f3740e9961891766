// One information set of the abstracted game: what the player to act has regretted and played.
//
// The three actions are 0 fold, 1 call, 2 raise. There is no array of flags: an action is valid
// exactly while its regret is not NaN, and the marker therefore travels with the node through
// strategy files. Single-threaded.
#pragma once

#include "tree/abstracted_actions.h"

#include <iosfwd>

class CFRNode {
public:
    // Leaves both arrays unset: whoever made the node fills them.
    CFRNode();
    explicit CFRNode(bool* valid);
    virtual ~CFRNode();

    // Zero sums; NaN regret where valid[i] is false.
    void initialize(bool* valid);

    bool isActionValid(int a) const;
    // The strategy gathered so far is left as it is.
    void setActionInvalid(int a);
    int getNumValidActions() const;

    // Regret matching (Hart and Mas-Colell 2000) on the positive regrets: the current strategy goes
    // to strategy[0..2], and weight times it is added to strategySum. Invalid actions get 0.
    void getStrategy(double weight, double* strategy);

    // The average strategy, to avg[0..2]. Only valid actions count in the total, but every action
    // is divided by it: one that was invalidated after it had gathered weight still shows a share.
    void getAverageStrategy(double* avg) const;

    // An action drawn from the average strategy with one draw of the process-wide engine. When
    // rounding leaves the cumulative sum below the draw, or no action is valid, call (1).
    int getRandomActionIndex() const;

    double regretSum[numAbstractedActions];
    double strategySum[numAbstractedActions];
};

// Training touches a node on every visit: it is its six numbers behind the object's header.
static_assert(sizeof(CFRNode) == sizeof(void*) + 6 * sizeof(double));

// "( call: 0.25 raise: 0.75 )": the average strategy over the valid actions; no line end.
std::ostream& operator<<(std::ostream& out, CFRNode& node);
