#include "clustering/abstraction_description.h"

#include "clustering/checked_file.h"
#include "clustering/hand_features.h"

namespace tamarin {

namespace {

constexpr CheckedKind descriptionKind{"tmrnabst", 1, "the description of a card abstraction"};

template <class Description, class Archive>
void eachDescriptionField(Description& description, Archive& field) {
    eachField(description.options, field);
    for (auto& round : description.rounds)
        eachField(round, field);
    field(description.startingHandClusters);
}

bool possible(const AbstractionDescription& description) {
    if (static_cast<size_t>(description.options.method) >= methodNames.size())
        return false;
    for (const RoundDescription& round : description.rounds)
        if (round.buckets == 0 || round.buckets > mostBuckets ||
            round.centres.size() % round.buckets != 0)
            return false;
    const size_t starting = description.startingHandClusters.size();
    return starting == 0 || starting == roundSizes[0];
}

} // namespace

AbstractionOptions AbstractionOptions::normalised() const {
    if (method == AbstractionMethod::emd)
        return *this;
    AbstractionOptions plain;
    plain.method = method;
    return plain;
}

size_t centreWidth(AbstractionMethod method, size_t round) {
    if (method == AbstractionMethod::percentile)
        return sizeof(uint64_t);
    return round == 3 ? StrengthMetric::width : HistogramMetric::width;
}

BucketCounts AbstractionDescription::counts() const {
    BucketCounts counts{};
    for (size_t round = 0; round < counts.size(); ++round)
        counts[round] = rounds[round].buckets;
    return counts;
}

Status writeDescription(const std::string& path, const AbstractionDescription& description) {
    Packer packer;
    eachDescriptionField(description, packer);
    return writeCheckedFile(path, descriptionKind, packer.bytes());
}

Result<AbstractionDescription> readDescription(const std::string& path) {
    const Result<std::string> payload = readCheckedFile(path, descriptionKind);
    if (!payload)
        return Error{payload.error()};
    AbstractionDescription description;
    Unpacker unpacker(*payload);
    eachDescriptionField(description, unpacker);
    if (!unpacker.whole() || !possible(description))
        return Error{path + ": holds numbers that no card abstraction has"};
    return description;
}

std::string differenceOf(const AbstractionOptions& there, const BucketCounts& countsThere,
                         const AbstractionOptions& here, const BucketCounts& countsHere) {
    const auto differ = [](const char* field, const auto& made, const auto& wanted) {
        return std::string(field) + " is " + made + " there and " + wanted + " here";
    };
    if (there.method != here.method)
        return differ("the method", std::string(methodNames[static_cast<size_t>(there.method)]),
                      methodNames[static_cast<size_t>(here.method)]);
    if (countsThere != countsHere)
        return differ("the number of buckets", abstractionName(countsThere, AbstractionMethod::emd),
                      abstractionName(countsHere, AbstractionMethod::emd));
    const struct {
        const char* name;
        uint64_t there;
        uint64_t here;
    } fields[] = {
        {"the number of clusters of starting hands", there.clusters, here.clusters},
        {"the seed", there.seed, here.seed},
        {"the sample", there.sample, here.sample},
        {"the number of restarts", there.restarts, here.restarts},
        {"the number of iterations", there.iterations, here.iterations},
        {"the tolerance", there.tolerance, here.tolerance},
    };
    for (const auto& field : fields)
        if (field.there != field.here)
            return differ(field.name, std::to_string(field.there), std::to_string(field.here));
    return {};
}

} // namespace tamarin
