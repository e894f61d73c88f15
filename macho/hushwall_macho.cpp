// hushwall-macho: signs the phone's binaries for iOS 7 and 8 and checks
// them before they are packed (scripts/package-device.sh runs it).
//
//   hushwall-macho sign --identifier ID FILE   replace FILE's signature
//   hushwall-macho check [--min-ios X.Y] FILE...
//   hushwall-macho describe FILE               the CodeDirectory's fields
//
// Exit status 0 when everything holds, 1 when a check finds a problem, 2
// for a wrong command line or a file that cannot be read or written.
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "macho/code_signature.h"
#include "macho/image.h"
#include "macho/phone_check.h"
#include "macho/sign.h"

namespace {

using hushwall::macho::Bytes;

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

Bytes readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

// Written beside the file and renamed over it, keeping its mode: a failed
// write leaves the old file whole.
void replaceFile(const std::string& path, const Bytes& bytes) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw std::runtime_error("cannot read " + path);
  const std::string temporary = path + ".signing";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + temporary);
  }
  if (::chmod(temporary.c_str(), info.st_mode & 07777) != 0 ||
      std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::remove(temporary.c_str());
    throw std::runtime_error("cannot replace " + path);
  }
}

std::uint32_t parseVersion(const std::string& text) {
  std::smatch m;
  if (!std::regex_match(text, m, std::regex(R"(([0-9]{1,2})\.([0-9]{1,2}))"))) {
    throw UsageError("--min-ios wants MAJOR.MINOR, such as 7.0, not '" + text + "'");
  }
  return hushwall::macho::iosVersion(std::stoul(m[1]), std::stoul(m[2]));
}

int sign(const std::vector<std::string>& args) {
  if (args.size() != 3 || args[0] != "--identifier") throw UsageError("sign --identifier ID FILE");
  replaceFile(args[2], hushwall::macho::sign(readAll(args[2]), args[1]));
  return 0;
}

int check(std::vector<std::string> args) {
  std::uint32_t minOs = hushwall::macho::iosVersion(7, 0);
  if (args.size() >= 2 && args[0] == "--min-ios") {
    minOs = parseVersion(args[1]);
    args.erase(args.begin(), args.begin() + 2);
  }
  if (args.empty()) throw UsageError("check [--min-ios X.Y] FILE...");
  int status = 0;
  for (const std::string& path : args) {
    for (const std::string& problem : hushwall::macho::checkForPhone(readAll(path), minOs)) {
      std::cerr << path << ": " << problem << "\n";
      status = 1;
    }
  }
  return status;
}

int describe(const std::vector<std::string>& args) {
  if (args.size() != 1) throw UsageError("describe FILE");
  const Bytes file = readAll(args[0]);
  const auto command = hushwall::macho::parseImage(file).find(hushwall::macho::kCodeSignature);
  if (!command) throw std::runtime_error(args[0] + " has no code signature");
  const auto cd =
      hushwall::macho::readCodeDirectory(file, hushwall::macho::le32(file, command->offset + 8),
                                         hushwall::macho::le32(file, command->offset + 12));
  char version[16];
  std::snprintf(version, sizeof version, "0x%x", cd.version);
  std::cout << "identifier=" << cd.identifier << " version=" << version
            << " hashType=" << int{cd.hashType} << " hashSize=" << int{cd.hashSize}
            << " pageSize=" << (1u << cd.pageShift) << " nSpecialSlots=" << cd.nSpecialSlots
            << " nCodeSlots=" << cd.nCodeSlots << " codeLimit=" << cd.codeLimit << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> all(argv + 1, argv + argc);
  try {
    if (all.empty()) throw UsageError("sign, check or describe");
    const std::vector<std::string> args(all.begin() + 1, all.end());
    if (all[0] == "sign") return sign(args);
    if (all[0] == "check") return check(args);
    if (all[0] == "describe") return describe(args);
    throw UsageError("no command '" + all[0] + "' (sign, check, describe)");
  } catch (const UsageError& e) {
    std::cerr << "usage: hushwall-macho " << e.what() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "hushwall-macho: " << e.what() << "\n";
  }
  return 2;
}
