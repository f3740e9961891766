#include "support/util.h"

#include "support/fixed_assert.h"

#include <algorithm>
#include <assert.h>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

// The bytes read into elements; what cannot be opened or read has said so on standard error.
size_t readTable(const char* path, void* elements, size_t bytes) {
    int fd;
    while ((fd = open(path, O_RDONLY | O_CLOEXEC)) < 0 && errno == EINTR) {
    }
    size_t used = 0;
    int cause = fd < 0 ? errno : 0;
    while (cause == 0 && used < bytes) {
        const ssize_t got = read(fd, static_cast<char*>(elements) + used, bytes - used);
        if (got == 0)
            break;
        if (got > 0)
            used += static_cast<size_t>(got);
        else if (errno != EINTR)
            cause = errno;
    }
    if (fd >= 0)
        close(fd);
    if (cause != 0)
        std::fprintf(stderr, "WARNING: could not %s %s: %s: the table is all zeros%s\n",
                     fd < 0 ? "open" : "read", path, std::generic_category().message(cause).c_str(),
                     used > 0 ? " after its first part" : "");
    return used;
}

template <class Element>
Element* loadTable(const char* path, size_t size) {
    // Uninitialised, and then zeroed only where the file did not reach: the largest tables have
    // a gigabyte. A torn last element counts as missing.
    Element* table = new Element[size];
    const size_t loaded = readTable(path, table, size * sizeof(Element)) / sizeof(Element);
    std::fill(table + loaded, table + size, Element{});
    return table;
}

// Whether all went well; the line on standard error says why not, and the caller's assertion ends
// the process.
bool saved(const char* path, const void* elements, size_t bytes) {
    const tamarin::Status status = tamarin::saveTable(path, elements, bytes);
    if (!status)
        std::fprintf(stderr, "ERROR: %s\n", status.error().c_str());
    return status.ok();
}

} // namespace

tamarin::Status tamarin::saveTable(const char* path, const void* elements, size_t bytes,
                                   FileSystem& files) {
    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    if (Status status = file->write(elements, bytes); !status)
        return status;
    return file->commit();
}

int* loadIntTable(const char* path, size_t size) {
    return loadTable<int>(path, size);
}
uint8_t* loadByteTable(const char* path, size_t size) {
    return loadTable<uint8_t>(path, size);
}
double* loadDoubleTable(const char* path, size_t size) {
    return loadTable<double>(path, size);
}

// The texts of these three assertions are older than the way in which the files are written now;
// they still mean that not all elements are on the disk.
#define ASSERT_SAVED(condition, text)                                                              \
    TAMARIN_FIXED_ASSERT(condition, text, "src/support/util.cpp", __PRETTY_FUNCTION__)

void saveIntTable(const char* path, int* arr, size_t size) {
    ASSERT_SAVED(saved(path, arr, size * sizeof(int)),
                 "fwrite(arr, sizeof (int), size, file)==size");
}

void saveByteTable(const char* path, uint8_t* arr, size_t size) {
    ASSERT_SAVED(saved(path, arr, size * sizeof(uint8_t)),
                 "fwrite(arr, sizeof (uint8_t), size, file)==size");
}

void saveDoubleTable(const char* path, double* arr, size_t size) {
    ASSERT_SAVED(saved(path, arr, size * sizeof(double)),
                 "fwrite(arr, sizeof (double), size, file)==size");
}

#undef ASSERT_SAVED

bool file_exist(const std::string& name) {
    struct stat status = {};
    return stat(name.c_str(), &status) == 0;
}

std::vector<std::string>& split(const std::string& s, char delim, std::vector<std::string>& elems) {
    for (size_t begin = 0; begin < s.size();) {
        const size_t end = std::min(s.find(delim, begin), s.size());
        elems.push_back(s.substr(begin, end - begin));
        begin = end + 1;
    }
    return elems;
}

std::vector<std::string> split(const std::string& s, char delim) {
    std::vector<std::string> elems;
    split(s, delim, elems);
    return elems;
}

uint8_t* k_means(double** data, int n, int m, int k, double t, double** centroids) {
    assert(data && k > 0 && k <= n && m > 0 && t >= 0);

    const auto points = static_cast<size_t>(n);
    const auto dimensions = static_cast<size_t>(m);
    const auto clusters = static_cast<size_t>(k);

    auto* labels = static_cast<uint8_t*>(std::calloc(points, sizeof(uint8_t)));
    if (!labels)
        throw std::bad_alloc();
    std::vector<int> counts(clusters);
    std::vector<double> sums(clusters * dimensions);
    std::vector<double> ownValues(centroids ? 0 : clusters * dimensions);
    std::vector<double*> centres(clusters);
    for (size_t i = 0; i < clusters; ++i) {
        centres[i] = centroids ? centroids[i] : &ownValues[i * dimensions];
        std::copy_n(data[i * (points / clusters)], dimensions, centres[i]);
    }

    double error = DBL_MAX;
    double old;
    do {
        old = error;
        error = 0;
        std::fill(sums.begin(), sums.end(), 0.0);
        std::fill(counts.begin(), counts.end(), 0);
        for (size_t h = 0; h < points; ++h) {
            double smallest = DBL_MAX;
            size_t nearest = labels[h];
            for (size_t i = 0; i < clusters; ++i) {
                double distance = 0;
                for (size_t j = dimensions; j-- > 0;) {
                    const double difference = data[h][j] - centres[i][j];
                    distance += difference * difference;
                }
                if (distance < smallest) {
                    smallest = distance;
                    nearest = i;
                }
            }
            labels[h] = static_cast<uint8_t>(nearest);
            for (size_t j = 0; j < dimensions; ++j)
                sums[nearest * dimensions + j] += data[h][j];
            ++counts[nearest];
            error += smallest;
        }
        for (size_t i = 0; i < clusters; ++i)
            for (size_t j = 0; j < dimensions; ++j) {
                const double sum = sums[i * dimensions + j];
                centres[i][j] = counts[i] ? sum / counts[i] : sum;
            }
        // Written so that points that are not finite end the loop, too.
    } while (std::fabs(error - old) > t);
    return labels;
}
