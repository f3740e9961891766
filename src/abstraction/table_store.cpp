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

template <class T>
TableStore::Loaded<T> TableStore::load(const std::string& path, size_t count) {
    if (const auto mapped = map<T>(path, count))
        return {*mapped, true};
    return {readTable(path, count, static_cast<T*>(nullptr)), false};
}

Result<double*> TableStore::mapDoubles(const std::string& path, size_t count) {
    return map<double>(path, count);
}
Result<uint8_t*> TableStore::mapBytes(const std::string& path, size_t count) {
    return map<uint8_t>(path, count);
}

TableStore::Loaded<double> TableStore::doubles(const std::string& path, size_t count) {
    return load<double>(path, count);
}
TableStore::Loaded<uint8_t> TableStore::bytes(const std::string& path, size_t count) {
    return load<uint8_t>(path, count);
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
    std::fprintf(stderr, "ERROR: %s has %zu bytes, not %zu: rebuilding it\n", path.c_str(),
                 static_cast<size_t>(status.st_size), bytes);
    if (const Status moved = setAsideBadFile(path); !moved)
        std::fprintf(stderr, "WARNING: %s\n", moved.error().c_str());
    return false;
}

} // namespace tamarin
