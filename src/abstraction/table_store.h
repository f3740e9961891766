// Tables out of files: mapped where that works, and who releases what.
//
// A player that only plays needs a few bytes of each table, so files are mapped read-only and read
// page by page as they are looked at. Tables that a caller or a computation made live on the heap
// beside them; release() knows one from the other.
#pragma once

#include "abstraction/table_contents.h"
#include "support/file.h"
#include "support/result.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace tamarin {

class TableStore {
public:
    template <class T>
    struct Loaded {
        T* table;
        bool whole; // false for the all-zero table that stands for an unreadable file
    };
    // The file's count elements. The table must not be written to: it is the file. A file that
    // cannot be read gives a table of zeros and one line on standard error. T is double or uint8_t.
    template <class T>
    Loaded<T> load(const std::string& path, size_t count);

    // The same, but an error instead of zeros.
    template <class T>
    Result<T*> map(const std::string& path, size_t count);

    // Gives the pages of a table from here back to the system, which reads them again when needed;
    // does nothing for any other table.
    void forgetPages(const void* table) const;

    // Gives up a table from here, or one made with new[]; null is harmless.
    void release(double* table);
    void release(uint8_t* table);

private:
    template <class T>
    void releaseTable(T* table);

    std::map<const void*, MappedFile> mapped_;
};

// Whether there is a file at path, and of the right size. One of the wrong size is never used: it
// is moved to PATH.bad after "ERROR: PATH has N bytes, not M: rebuilding it" on standard error.
// Where it cannot be moved, a line says so and it stays. The answer is false all the same: the
// caller must remember it, and not ask the file system again.
bool usableFile(const std::string& path, size_t bytes);

// The same, and its entries are checked: a damaged file is moved away in the same manner. A file
// that cannot be read passes, since it cannot be judged. T is double or uint8_t.
template <class T>
bool usableTable(const std::string& path, size_t count, const EntryLimits& limits);

// "ERROR: PATH PROBLEM: rebuilding it" on standard error, and the file is moved to PATH.bad.
void setTableAside(const std::string& path, const std::string& problem);

} // namespace tamarin
