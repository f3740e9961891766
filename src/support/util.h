// Raw table files, string splitting and k-means.
//
// A raw table file is a bare array in native byte order: no header, no count, no checksum. The
// reader has to know the number of elements.
#pragma once

#include "support/file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A new array of size elements (released with delete[]) holding the file's elements, followed by
// zeros when the file is shorter. A file that cannot be opened gives all zeros and one line on
// standard error, so that an empty table does not go unnoticed.
int* loadIntTable(const char* path, size_t size);
uint8_t* loadByteTable(const char* path, size_t size);
double* loadDoubleTable(const char* path, size_t size);

// Replaces path with the size elements, atomically: the old file stays until the new one is whole
// on the disk. A write that fails ends the process by assertion, after a line that names the cause.
void saveIntTable(const char* path, int* arr, size_t size);
void saveByteTable(const char* path, uint8_t* arr, size_t size);
void saveDoubleTable(const char* path, double* arr, size_t size);

namespace tamarin {

// The writing that the three above share: writes the bytes atomically, or says why not.
Status saveTable(const char* path, const void* elements, size_t bytes,
                 FileSystem& files = systemFiles());

} // namespace tamarin

// Whether the file system knows name, whatever kind of file it is (a directory counts).
bool file_exist(const std::string& name);

// The pieces of s between occurrences of delim. Adjacent delimiters give an empty piece; a
// delimiter at the very end does not add one; an empty string has no pieces.
std::vector<std::string>& split(const std::string& s, char delim, std::vector<std::string>& elems);
std::vector<std::string> split(const std::string& s, char delim);

// Lloyd's k-means over n points of m dimensions into k clusters (Lloyd 1982), started from every
// (n / k)-th point and stopped when the summed squared error changes by at most t. Returns n byte
// labels, released with free(). centroids: k vectors of m doubles that receive the result, or null.
// A cluster that loses all its points deliberately moves to the origin. Bad arguments (no data,
// k outside 1..n, m < 1, t < 0) end the process by assertion; k above 256 does not fit the labels.
uint8_t* k_means(double** data, int n, int m, int k, double t, double** centroids);
