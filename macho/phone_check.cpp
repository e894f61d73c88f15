#include "macho/phone_check.h"

#include <regex>
#include <set>

#include "macho/code_signature.h"
#include "macho/image.h"
#include "macho/imports.h"

namespace hushwall::macho {
namespace {

std::string version(std::uint32_t v) {
  return std::to_string(v >> 16) + "." + std::to_string(v >> 8 & 0xff);
}

void checkLoadCommands(const Bytes& file, const Image& image, std::uint32_t minOs,
                       std::vector<std::string>& problems) {
  if (image.cpuType != kCpuArm64) problems.push_back("not an arm64 binary");
  // dyld of iOS 7 reads the deployment target from LC_VERSION_MIN_IPHONEOS;
  // LC_BUILD_VERSION came with iOS 12.
  const auto versionMin = image.find(kVersionMinIphoneos);
  if (!versionMin) {
    problems.push_back("no LC_VERSION_MIN_IPHONEOS");
  } else if (le32(file, versionMin->offset + 8) != minOs) {
    problems.push_back("LC_VERSION_MIN_IPHONEOS says " +
                       version(le32(file, versionMin->offset + 8)) + ", not " + version(minOs));
  }
  // Chained fixups and the separate exports trie replace the dyld info
  // that dyld of iOS 7 reads; it would bind nothing (they came with iOS 13).
  if (image.find(kDyldChainedFixups))
    problems.push_back("LC_DYLD_CHAINED_FIXUPS, which dyld of iOS 7 cannot read");
  if (image.find(kDyldExportsTrie))
    problems.push_back("LC_DYLD_EXPORTS_TRIE, which dyld of iOS 7 cannot read");
  // The Objective-C runtime of iOS 7 finds classes, categories and
  // selector references in __DATA only; in __DATA_CONST they go unseen.
  if (const Segment* dataConst = image.segment("__DATA_CONST")) {
    for (const Section& section : dataConst->sections) {
      if (section.name.rfind("__objc_", 0) == 0) {
        problems.push_back("__DATA_CONST," + section.name +
                           ", where the runtime of iOS 7 does not look");
      }
    }
  }
}

void checkSignature(const Bytes& file, const Image& image, std::vector<std::string>& problems) {
  const auto command = image.find(kCodeSignature);
  if (!command) {
    problems.push_back("no code signature: unsigned arm64 code is not run");
    return;
  }
  try {
    for (std::string& problem :
         verifySignature(file, le32(file, command->offset + 8), le32(file, command->offset + 12))) {
      problems.push_back("code signature: " + problem);
    }
  } catch (const FormatError& e) {
    problems.push_back(std::string("code signature: ") + e.what());
  }
}

void checkImports(const Bytes& file, const Image& image, std::uint32_t minOs,
                  std::vector<std::string>& problems) {
  std::set<std::string> shipped;
  for (std::size_t i = 0; i < kIos7LibraryCount; ++i) shipped.insert(kIos7Libraries[i].path);
  const std::vector<LinkedLibrary> libraries = linkedLibraries(file, image);
  for (const LinkedLibrary& library : libraries) {
    if (!library.weak && shipped.count(library.path) == 0) {
      problems.push_back("loads " + library.path + ", which is not among the libraries of iOS " +
                         version(minOs));
    }
  }
  std::vector<std::pair<std::regex, const LaterSymbol*>> later;
  for (std::size_t i = 0; i < kLaterCxxSymbolCount; ++i) {
    later.emplace_back(std::regex(kLaterCxxSymbols[i].pattern), &kLaterCxxSymbols[i]);
  }
  const std::set<std::string> lookedUp(kLookedUpAtRunTime,
                                       kLookedUpAtRunTime + kLookedUpAtRunTimeCount);
  for (const Import& import : importedSymbols(file, image)) {
    if (import.ordinal == kOrdinalDynamicLookup || import.ordinal == kOrdinalExecutable ||
        import.ordinal == 0 || import.ordinal > libraries.size()) {
      problems.push_back("imports " + import.symbol + " from no library it names");
      continue;
    }
    if (import.weak) continue;
    if (lookedUp.count(import.symbol) != 0) {
      problems.push_back("imports " + import.symbol + " strongly; it is looked up at run time");
    }
    // C and C++ names alike carry a leading underscore in Mach-O.
    const std::string name = import.symbol.empty() ? "" : import.symbol.substr(1);
    for (const auto& [pattern, entry] : later) {
      if (entry->since > minOs && std::regex_search(name, pattern)) {
        const std::string when = entry->since == kNever
                                     ? "is not shown to have"
                                     : "lacks (it came with iOS " + version(entry->since) + ")";
        problems.push_back("imports " + import.symbol + " (" + entry->reason + "), which iOS " +
                           version(minOs) + "'s C++ library " + when);
      }
    }
  }
}

}  // namespace

std::vector<std::string> checkForPhone(const Bytes& file, std::uint32_t minOs) {
  std::vector<std::string> problems;
  try {
    const Image image = parseImage(file);
    checkLoadCommands(file, image, minOs, problems);
    checkSignature(file, image, problems);
    checkImports(file, image, minOs, problems);
  } catch (const FormatError& e) {
    problems.push_back(e.what());
  }
  return problems;
}

}  // namespace hushwall::macho
