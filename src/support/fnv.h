// FNV-1a with 64 bits (Fowler, Noll and Vo): tells values and files apart, quickly and the same on
// every machine. It does not protect against somebody who makes two things look alike on purpose.
//
// Numbers count as their bytes, the least significant first. A double counts as its bits, so that 0
// and -0 are two values; every NaN is one value, since the bits of a NaN differ from one compiler
// to the next and nothing may depend on them.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace tamarin {

class Fnv1a {
public:
    void add(std::unsigned_integral auto number) {
        for (unsigned byte = 0; byte < sizeof number; ++byte)
            addByte(static_cast<uint8_t>(number >> 8U * byte));
    }
    void add(std::signed_integral auto number) {
        add(static_cast<std::make_unsigned_t<decltype(number)>>(number));
    }
    void add(double number) {
        add(std::bit_cast<uint64_t>(number == number ? number
                                                     : std::numeric_limits<double>::quiet_NaN()));
    }
    // Their bytes, without their number.
    void add(std::string_view text) {
        for (const char c : text)
            addByte(static_cast<uint8_t>(c));
    }

    uint64_t value() const { return hash_; }

private:
    void addByte(uint8_t byte) { hash_ = (hash_ ^ byte) * 0x100000001b3U; }

    uint64_t hash_ = 0xcbf29ce484222325U;
};

} // namespace tamarin
