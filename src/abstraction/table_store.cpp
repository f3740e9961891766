#include "abstraction/table_store.h"

#include "support/util.h"

#include <cstdio>
#include <sys/stat.h>

namespace tamarin {

namespace {

double* readTable(const std::string& path, size_t count, double*) {
    return loadDoubleTable(path.c_str(), count);
}
uint8_t* readTable(const std::string& path, size_t count, uint8_t*) {
    return loadByteTable(path.c_str(), count);
}

} // namespace

template <class T>
Result<T*> TableStore::map(const std::string& path, size_t count) {
    auto file = MappedFile::open(path, count * sizeof(T));
    if (!file)
        return Error{file.error()};
    // The class hands tables out as arrays that may be written; these pages are read-only.
    T* const table = const_cast<T*>(file->template as<T>().data());
    mapped_.emplace(table, std::move(*file));
    return table;
}

template Result<double*> TableStore::map(const std::string& path, size_t count);
template Result<uint8_t*> TableStore::map(const std::string& path, size_t count);

template <class T>
TableStore::Loaded<T> TableStore::load(const std::string& path, size_t count) {
    const Result<T*> mapped = map<T>(path, count);
    if (!mapped)
        return {readTable(path, count, static_cast<T*>(nullptr)), false};
    return {*mapped, true};
}

template TableStore::Loaded<double> TableStore::load(const std::string& path, size_t count);
template TableStore::Loaded<uint8_t> TableStore::load(const std::string& path, size_t count);

void TableStore::forgetPages(const void* table) const {
    if (const auto at = mapped_.find(table); at != mapped_.end())
        at->second.forgetPages();
}

template <class T>
void TableStore::releaseTable(T* table) {
    if (mapped_.erase(table) == 0)
        delete[] table;
}

void TableStore::release(double* table) {
    releaseTable(table);
}
void TableStore::release(uint8_t* table) {
    releaseTable(table);
}

bool usableFile(const std::string& path, size_t bytes) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return false;
    // A pipe or a device has no size to judge by.
    if (!S_ISREG(status.st_mode) || static_cast<size_t>(status.st_size) == bytes)
        return true;
    setTableAside(path,
                  "has " + std::to_string(status.st_size) + " bytes, not " + std::to_string(bytes));
    return false;
}

template <class T>
bool usableTable(const std::string& path, size_t count, const EntryLimits& limits) {
    if (!usableFile(path, count * sizeof(T)))
        return false;
    const auto file = MappedFile::open(path, count * sizeof(T));
    if (!file)
        return true;
    const std::string problem =
        problemOfEntries(file->template as<T>(), limits, 0, [&] { file->forgetPages(); });
    if (!problem.empty())
        setTableAside(path, problem);
    return problem.empty();
}

template bool usableTable<double>(const std::string&, size_t, const EntryLimits&);
template bool usableTable<uint8_t>(const std::string&, size_t, const EntryLimits&);

void setTableAside(const std::string& path, const std::string& problem) {
    std::fprintf(stderr, "ERROR: %s %s: rebuilding it\n", path.c_str(), problem.c_str());
    if (const auto moved = setAsideBadFile(path); !moved)
        std::fprintf(stderr, "WARNING: %s\n", moved.error().c_str());
}

} // namespace tamarin
