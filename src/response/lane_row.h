// Numbers of eight lanes side by side (betting_rounds.h), on which vector instructions work.
#pragma once

#include "response/betting_rounds.h"

namespace tamarin {

template <class Weight>
struct LaneRow {
    using Lanes [[gnu::vector_size(lanesInBlock * sizeof(Weight))]] = Weight;
    Lanes lanes{};

    void add(const LaneRow& other) { lanes += other.lanes; }
    void addScaled(const LaneRow& other, Weight factor) { lanes += other.lanes * factor; }
    void scale(double factor) { lanes *= static_cast<Weight>(factor); }
    void takeGreater(const LaneRow& other) { lanes = lanes > other.lanes ? lanes : other.lanes; }
};

} // namespace tamarin
