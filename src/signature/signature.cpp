#include "signature/signature.h"

#include "signature/parts.h"
#include "support/silent_output.h"

#include <algorithm>
#include <iterator>
#include <omp.h>

namespace tamarin {

namespace {

struct Part {
    const char* name;
    void (*add)(Fnv1a& hash, const SevenCardTable& table);
};

constexpr Part partList[] = {
    {"ranks", addRanks},
    {"indices", [](Fnv1a& hash, const SevenCardTable&) { addIndices(hash); }},
    {"small-games", [](Fnv1a& hash, const SevenCardTable&) { addSmallGames(hash); }},
    {"holdem", [](Fnv1a& hash, const SevenCardTable&) { addHoldem(hash); }},
    {"tables", addTables},
    {"clustering", [](Fnv1a& hash, const SevenCardTable&) { addClustering(hash); }},
    {"match", [](Fnv1a& hash, const SevenCardTable&) { addMatch(hash); }},
};

// How many threads a team has that is not told. The parts tell none: what is computed at all cores
// when asked for nothing else is computed so here.
class Threads {
public:
    explicit Threads(int threads) : before_(omp_get_max_threads()) {
        if (threads > 0)
            omp_set_num_threads(threads);
    }
    ~Threads() { omp_set_num_threads(before_); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

private:
    int before_;
};

} // namespace

uint64_t Signature::whole() const {
    Fnv1a hash;
    for (const SignaturePart& part : parts_) {
        hash.add(part.name);
        hash.add(part.value);
    }
    return hash.value();
}

std::optional<Signature> computeSignature(int threads, const std::function<bool()>& stop) {
    const SilentOutput silent;
    const Threads team(threads);
    const SevenCardTable table = SevenCardTable::generate();
    std::vector<SignaturePart> parts;
    for (const Part& part : partList) {
        if (stop && stop())
            return std::nullopt;
        Fnv1a hash;
        part.add(hash, table);
        parts.push_back({part.name, hash.value()});
    }
    return Signature(std::move(parts));
}

std::vector<std::string> partsThatDiffer(const Signature& a, const Signature& b) {
    std::vector<std::string> names;
    const auto collect = [&](const Signature& some, const Signature& others) {
        for (const SignaturePart& part : some.parts()) {
            const auto& list = others.parts();
            if (std::find(list.begin(), list.end(), part) == list.end() &&
                std::find(names.begin(), names.end(), part.name) == names.end())
                names.push_back(part.name);
        }
    };
    collect(a, b);
    collect(b, a);
    return names;
}

std::string signatureText(uint64_t value) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text(16, '0');
    for (char& digit : text) {
        digit = digits[value >> 60U];
        value <<= 4U;
    }
    return text;
}

} // namespace tamarin
