// How many of this process's open file descriptors refer to a file: the way
// a test sees connections that were left open on purpose.
#ifndef HUSHWALL_TESTING_OPEN_DESCRIPTORS_H_
#define HUSHWALL_TESTING_OPEN_DESCRIPTORS_H_

#include <cstddef>
#include <string>

namespace hushwall::testing {

// Counts the entries of /proc/self/fd whose target is `nativeFile`.
std::size_t openDescriptorsOf(const std::string& nativeFile);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_OPEN_DESCRIPTORS_H_
