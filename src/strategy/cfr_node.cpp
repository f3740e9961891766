#include "strategy/cfr_node.h"

#include "support/rng.h"

#include <ostream>

CFRNode::CFRNode() {}

CFRNode::CFRNode(bool* valid) {
    initialize(valid);
}

CFRNode::~CFRNode() = default;

void CFRNode::initialize(bool* valid) {
    for (int a = 0; a < numAbstractedActions; ++a) {
        regretSum[a] = valid[a] ? 0.0 : std::numeric_limits<double>::quiet_NaN();
        strategySum[a] = 0.0;
    }
}

bool CFRNode::isActionValid(int a) const {
    return regretSum[a] == regretSum[a];
}

void CFRNode::setActionInvalid(int a) {
    regretSum[a] = std::numeric_limits<double>::quiet_NaN();
}

int CFRNode::getNumValidActions() const {
    int count = 0;
    for (int a = 0; a < numAbstractedActions; ++a)
        count += isActionValid(a);
    return count;
}

void CFRNode::getStrategy(double weight, double* strategy) {
    double total = 0.0;
    for (int a = 0; a < numAbstractedActions; ++a) {
        strategy[a] = isActionValid(a) && regretSum[a] > 0.0 ? regretSum[a] : 0.0;
        if (isActionValid(a))
            total += strategy[a];
    }
    if (total > 0.0) {
        for (int a = 0; a < numAbstractedActions; ++a) {
            if (!isActionValid(a))
                continue;
            strategy[a] /= total;
            strategySum[a] += strategy[a] * weight;
        }
        return;
    }
    const double uniform = 1.0 / getNumValidActions();
    for (int a = 0; a < numAbstractedActions; ++a) {
        if (!isActionValid(a))
            continue;
        strategy[a] = uniform;
        strategySum[a] += uniform * weight;
    }
}

void CFRNode::getAverageStrategy(double* avg) const {
    double total = 0.0;
    for (int a = 0; a < numAbstractedActions; ++a)
        if (isActionValid(a))
            total += strategySum[a];
    if (total > 0.0) {
        for (int a = 0; a < numAbstractedActions; ++a)
            avg[a] = strategySum[a] / total;
        return;
    }
    const double uniform = 1.0 / getNumValidActions();
    for (int a = 0; a < numAbstractedActions; ++a)
        avg[a] = isActionValid(a) ? uniform : 0.0;
}

int CFRNode::getRandomActionIndex() const {
    double avg[numAbstractedActions];
    getAverageStrategy(avg);
    const double draw = pick_a_number(0.0, 1.0);
    double cumulative = 0.0;
    for (int a = 0; a < numAbstractedActions; ++a) {
        cumulative += avg[a];
        if (cumulative >= draw)
            return a;
    }
    return 1;
}

std::ostream& operator<<(std::ostream& out, CFRNode& node) {
    double avg[numAbstractedActions];
    node.getAverageStrategy(avg);
    out << "( ";
    for (int a = 0; a < numAbstractedActions; ++a)
        if (node.isActionValid(a))
            out << abstractedActionNames[a] << ": " << avg[a] << ' ';
    return out << ')';
}
