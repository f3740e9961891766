// What the pages of card tables are drawn with: shades that show an order, the grid of starting
// hands, and bars.
#pragma once

#include <array>
#include <span>
#include <string>

namespace tamarin {

struct Colour {
    double red, green, blue;

    std::string text() const; // "#3f7fbf"
    // Black or white, whichever reads better on it.
    const char* ink() const;
};

// Light to dark, so that the order shows without colour too.
using Ramp = std::array<Colour, 4>;
inline constexpr Ramp blues{{{237, 243, 249}, {166, 200, 228}, {63, 127, 191}, {16, 50, 96}}};
inline constexpr Ramp oranges{{{252, 240, 226}, {243, 190, 138}, {217, 113, 60}, {110, 44, 14}}};

// place: 0 is the lightest, 1 the darkest.
Colour shade(const Ramp& ramp, double place);

// The rules for tables of the classes range, spread and grid.
extern const char* const shadeStyle;

// A bar of a class spread table, as long as its share (0..1) says.
std::string barOf(double share);

// One starting hand: its name, what stands below it, and what a pointer resting on it shows.
std::string gridField(const Colour& colour, const std::string& name, const std::string& below,
                      const std::string& resting);
// Thirteen rows of thirteen such fields, or of as many as the deck has ranks.
std::string gridOf(std::span<const std::string> fields, size_t side = 13);

} // namespace tamarin
