// One number for what this program computes.
//
// Everything whose bits are promised is done here once, in a small piece and from fixed seeds, and
// hashed: ranks, indices, training, values, tables, a match. Two builds with the same signature
// rank, count, train and play alike to the last bit; so every compiler, every level of processor
// and every number of threads must give the one that expected.cpp states.
//
// Nothing is read or written, no environment or locale is looked at; the process-wide engine is
// seeded. A second of work, most of it the seven-card table's, and 300 MB. One caller at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tamarin {

struct SignaturePart {
    std::string name;
    uint64_t value = 0;
    bool operator==(const SignaturePart&) const = default;
};

class Signature {
public:
    explicit Signature(std::vector<SignaturePart> parts) : parts_(std::move(parts)) {}

    // They show where a difference lies: no part depends on another.
    const std::vector<SignaturePart>& parts() const { return parts_; }
    // Over all parts.
    uint64_t whole() const;

    bool operator==(const Signature&) const = default;

private:
    std::vector<SignaturePart> parts_;
};

// threads 0: all cores; the result does not depend on it. stop is asked between parts; true ends
// the work without a result.
std::optional<Signature> computeSignature(int threads = 0, const std::function<bool()>& stop = {});

// What every build gives.
const Signature& expectedSignature();

// The names of the parts that differ or are only in one of the two.
std::vector<std::string> partsThatDiffer(const Signature& a, const Signature& b);

// "00a1f3d2c4b59687".
std::string signatureText(uint64_t value);

} // namespace tamarin
