// SpringBoard as each firmware generation of the package really has it: for
// every class and selector that Hushwall hooks or sends inside SpringBoard,
// the methods that the public class dumps of that generation show, with the
// types they declare. The Objective-C SpringBoard of the tests registers
// exactly one generation's methods at start (installSpringBoardFirmware), so
// that each generation is a SpringBoard of its own.
//
// The dumps (read-only, never copied here; each fact in the .cpp names the
// file and line it came from):
//   iOS 7.0, 7.1, 8.0, 8.1  github.com/MP0w/iOS-Headers, folders iOS7/, iOS7.1/,
//                           iOS8.0/, iOS8.1/ (class-dump of the arm64 slice)
//   iOS 8.2 (12D508)        github.com/coleflowers/iOS8-Class-Dump (classdump-dyld,
//                           64-bit; SpringBoard only, no BulletinBoard or UIKit)
//   iOS 8.4 (12H143)        github.com/Zob3k/iOS-8.4-Headers-Full (classdump-dyld,
//                           32-bit: BOOL reads as char, NSUInteger as unsigned)
// iOS 8.3 has no dump; 8.2 and 8.4 agree on every method listed, so 8.3 is
// taken to be as they are.
#ifndef HUSHWALL_OBJCHOST_SPRINGBOARD_FIRMWARE_H_
#define HUSHWALL_OBJCHOST_SPRINGBOARD_FIRMWARE_H_

#include <cstddef>
#include <string>

namespace hushwall::objchost {

// One class dump: a firmware, where its headers are, and the word size of
// the binary it was taken from (a 32-bit dump cannot tell BOOL from char,
// nor NSUInteger from unsigned int).
struct ClassDump {
  int firmware;  // major * 100 + minor
  const char* where;
  int wordBits;
};

// A method as one or more dumps declare it.
struct FirmwareMethod {
  const char* className;
  char kind;  // '-' instance method, '+' class method
  const char* selector;
  // The declared result and argument types in the dump's own words, one
  // pair of parentheses each, the result first: "(void)(id)(unsigned long long)".
  const char* declaration;
  unsigned dumps;  // bit i: kClassDumps[i] declares the method so
};

struct FirmwareProfile {
  const char* name;     // "8.2-8.4"
  const char* version;  // the first firmware it covers, as installSpringBoardFirmware takes it
  int since;            // major * 100 + minor, the first firmware covered
  int before;           // the first firmware not covered
  const FirmwareMethod* methods;
  std::size_t count;
};

extern const ClassDump kClassDumps[];
extern const std::size_t kClassDumpCount;
// The generations, oldest first, without gap or overlap.
extern const FirmwareProfile kFirmwareProfiles[];
extern const std::size_t kFirmwareProfileCount;

// The generation of a firmware version such as "8.1" or "7.0.4". Throws
// std::invalid_argument for anything else, and for a version the package
// does not claim (before 7.0, after 8.4).
const FirmwareProfile& firmwareProfileFor(const std::string& version);

// The generation's method of that class and selector (the first, where
// dumps of two word sizes declare it), or null where it has none.
const FirmwareMethod* methodOf(const FirmwareProfile& profile, const std::string& className,
                               const std::string& selector);

// The method's type encoding on arm64, from a dump's declaration: "v@:@@Q"
// for (void)(id)(id)(unsigned long long). A 32-bit dump's char is read as
// BOOL and its unsigned as NSUInteger, as the 64-bit dumps of the same
// methods declare them. Throws std::invalid_argument for a type it does not
// know.
std::string arm64Encoding(const FirmwareMethod& method, const ClassDump& dump);
// The first dump of the method, whose declaration the others share in arm64
// terms (the tests hold them to it).
const ClassDump& firstDumpOf(const FirmwareMethod& method);

// In the Objective-C SpringBoard (objchost/springboard_classes.mm), before
// the tweak is injected: registers the methods of the generation of
// `version` on the stand-in classes, and returns that generation. Throws
// std::invalid_argument as firmwareProfileFor does, and std::logic_error
// when the process already has a generation (methods cannot be taken back).
const FirmwareProfile& installSpringBoardFirmware(const std::string& version);

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_SPRINGBOARD_FIRMWARE_H_
