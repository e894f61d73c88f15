// Files as the tests compare them: a file's exact bytes, and a whole tree
// at once, to tell that nothing under a folder changed.
#ifndef HUSHWALL_TESTING_FILE_TREE_H_
#define HUSHWALL_TESTING_FILE_TREE_H_

#include <map>
#include <string>

namespace hushwall::testing {

// The file's bytes, NUL and all; empty when it cannot be read.
std::string fileBytes(const std::string& path);

// Every entry under `directory` by path: a folder as "/", a link as
// "-> target" (never followed), a file as its bytes.
std::map<std::string, std::string> treeSnapshot(const std::string& directory);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_FILE_TREE_H_
