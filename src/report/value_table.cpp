#include "report/value_table.h"

#include <fmt/format.h>

namespace tamarin {

std::string valueTable(const Game& rules, const ProfileValue& value) {
    const int32_t blind = bigBlind(rules);
    std::string text = "        value          best response  gain           value\n"
                       "        chips/hand     chips/hand     chips/hand     mbb/hand\n";
    for (size_t p = 0; p < value.value.size(); ++p)
        text += fmt::format("seat {:<3}{:<15.9f}{:<15.9f}{:<15.3e}{:.3f}\n", p, value.value[p],
                            value.best[p], value.gain(p),
                            blind > 0 ? 1000.0 * value.value[p] / blind : 0.0);
    text += fmt::format("NashConv {:.6e}, per player {:.6e} chips/hand\n", value.nashConv(),
                        value.nashConv() / static_cast<double>(value.value.size()));
    return text;
}

} // namespace tamarin
