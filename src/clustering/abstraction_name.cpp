#include "clustering/abstraction_name.h"

#include "abstraction/table_names.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace tamarin {

namespace {

Error badCounts(const std::string& text) {
    return Error{"'" + text +
                 "' is no card abstraction: give the buckets of the four rounds, such as "
                 "169-200-200-200, 1 to 169 pre-flop and 1 to 65535 after"};
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
}

} // namespace

Result<AbstractionMethod> methodNamed(const std::string& name) {
    for (size_t m = 0; m < methodNames.size(); ++m)
        if (name == methodNames[m])
            return static_cast<AbstractionMethod>(m);
    return Error{"there is no method '" + name + "'; the methods are emd and percentile"};
}

Result<BucketCounts> readBucketCounts(const std::string& text) {
    BucketCounts counts{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (size_t round = 0; round < counts.size(); ++round) {
        if (round > 0 && (at == end || *at++ != '-'))
            return badCounts(text);
        if (at == end || *at < '1' || *at > '9') // no sign, no leading zero: one name, one meaning
            return badCounts(text);
        const auto [next, problem] = std::from_chars(at, end, counts[round]);
        if (problem != std::errc{} || counts[round] > (round == 0 ? roundSizes[0] : mostBuckets))
            return badCounts(text);
        at = next;
    }
    if (at != end)
        return badCounts(text);
    return counts;
}

std::string abstractionName(const BucketCounts& counts, AbstractionMethod method) {
    std::string name;
    for (const uint32_t count : counts)
        name += (name.empty() ? "" : "-") + std::to_string(count);
    return method == AbstractionMethod::percentile ? name + "-percentile" : name;
}

Status checkAbstractionName(const std::string& name) {
    if (name.empty() || name.size() > 200 || name.front() == '.' ||
        !std::all_of(name.begin(), name.end(), isNameCharacter))
        return Error{"'" + name +
                     "' is no name for a card abstraction: letters, digits, '-', '_' and '.', "
                     "at most 200 of them, and no '.' first"};
    return {};
}

std::string abstractionFolder(const std::string& directory, const std::string& name) {
    return inDirectory(directory, std::string(lookupDirectory) + "/" + name);
}

} // namespace tamarin
