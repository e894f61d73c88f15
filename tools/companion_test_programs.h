// The companion programs as the tests of tools/ run them: real processes on
// a device root, with their exit status and what they printed. Shared by the
// hushwallctl tests and the boundary tests, which are one test program.
#ifndef HUSHWALL_TOOLS_COMPANION_TEST_PROGRAMS_H_
#define HUSHWALL_TOOLS_COMPANION_TEST_PROGRAMS_H_

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "testing/running_program.h"

namespace hushwall::testing {

// `hushwallctl --root ROOT ARGS...`.
inline std::vector<std::string> ctlCommand(const std::string& root, std::vector<std::string> args) {
  args.insert(args.begin(), {HUSHWALLCTL_PATH, "--root", root});
  return args;
}

inline int ctl(const std::string& root, std::vector<std::string> args, std::string* out = nullptr,
               std::string* err = nullptr) {
  return runProgram(ctlCommand(root, std::move(args)), out, err);
}

// `hushwall-model ARGS...`.
inline int model(std::vector<std::string> args, std::string* out = nullptr, std::string* err = nullptr) {
  args.insert(args.begin(), HUSHWALL_MODEL_PATH);
  return runProgram(std::move(args), out, err);
}

// A file's bytes as they are, NUL and all.
inline std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace hushwall::testing

#endif  // HUSHWALL_TOOLS_COMPANION_TEST_PROGRAMS_H_
