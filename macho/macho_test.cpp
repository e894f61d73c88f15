// The signer and the phone check against Mach-O files made here: no SDK,
// no linker. The file is an arm64 dylib whose __TEXT holds `codeSize`
// bytes of pattern, whose symbol table imports what the test says.
#include <functional>
#include <gtest/gtest.h>

#include "macho/code_signature.h"
#include "macho/image.h"
#include "macho/phone_check.h"
#include "macho/sign.h"

namespace hushwall::macho {
namespace {

struct ImageShape {
  std::size_t codeSize = 3 * 4096 + 5;
  std::uint32_t versionMin = iosVersion(7, 0);
  std::vector<std::string> libraries = {"/usr/lib/libobjc.A.dylib", "/usr/lib/libc++.1.dylib"};
  // Symbol, library ordinal (1-based), n_desc's other bits.
  std::vector<std::tuple<std::string, std::uint8_t, std::uint16_t>> imports = {{"_objc_msgSend", 1, 0},
                                                                                {"__ZdlPv", 2, 0}};
  std::string constSection;            // a section of __DATA_CONST, if any
  std::uint32_t extraCommand = 0;      // an empty linkedit_data_command, if any
};

void put32(Bytes& b, std::uint32_t v) { for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> 8 * i)); }
void put64(Bytes& b, std::uint64_t v) { put32(b, static_cast<std::uint32_t>(v)); put32(b, static_cast<std::uint32_t>(v >> 32)); }
void putName(Bytes& b, const std::string& name) { Bytes field(16, 0); std::copy(name.begin(), name.end(), field.begin()); b.insert(b.end(), field.begin(), field.end()); }
void segment(Bytes& b, const std::string& name, std::uint64_t fileoff, std::uint64_t filesize, const std::string& section, std::uint32_t sectionOffset) {
  put32(b, kSegment64); put32(b, section.empty() ? 72 : 152); putName(b, name);
  put64(b, fileoff); put64(b, filesize); put64(b, fileoff); put64(b, filesize);
  put32(b, 5); put32(b, 5); put32(b, section.empty() ? 0 : 1); put32(b, 0);
  if (section.empty()) return;
  putName(b, section); putName(b, name); put64(b, sectionOffset); put64(b, filesize - sectionOffset);
  put32(b, sectionOffset); for (int i = 0; i < 7; ++i) put32(b, 0);
}

constexpr std::size_t kTextStart = 0x400;  // header padding for the signature's command

Bytes build(const ImageShape& shape) {
  const std::size_t textEnd = kTextStart + shape.codeSize;
  const std::size_t linkedit = (textEnd + 15) / 16 * 16;
  Bytes strings(1, 0), symbols;
  for (const auto& [name, ordinal, desc] : shape.imports) {
    put32(symbols, static_cast<std::uint32_t>(strings.size()));
    symbols.push_back(0x01); symbols.push_back(0);  // N_UNDF | N_EXT
    symbols.push_back(static_cast<std::uint8_t>(desc)); symbols.push_back(ordinal);
    put64(symbols, 0);
    strings.insert(strings.end(), name.begin(), name.end()); strings.push_back(0);
  }
  Bytes cmds;
  segment(cmds, "__TEXT", 0, textEnd, "__text", kTextStart);
  if (!shape.constSection.empty()) segment(cmds, "__DATA_CONST", kTextStart, 16, shape.constSection, kTextStart);
  segment(cmds, "__LINKEDIT", linkedit, symbols.size() + strings.size(), "", 0);
  put32(cmds, kVersionMinIphoneos); put32(cmds, 16); put32(cmds, shape.versionMin); put32(cmds, shape.versionMin);
  put32(cmds, kSymtab); put32(cmds, 24); put32(cmds, static_cast<std::uint32_t>(linkedit));
  put32(cmds, static_cast<std::uint32_t>(shape.imports.size()));
  put32(cmds, static_cast<std::uint32_t>(linkedit + symbols.size())); put32(cmds, static_cast<std::uint32_t>(strings.size()));
  for (const std::string& path : shape.libraries) {
    const std::uint32_t size = static_cast<std::uint32_t>((24 + path.size() + 1 + 7) / 8 * 8);
    put32(cmds, kLoadDylib); put32(cmds, size); put32(cmds, 24); put32(cmds, 0); put32(cmds, 0); put32(cmds, 0);
    cmds.insert(cmds.end(), path.begin(), path.end()); cmds.resize(cmds.size() + size - 24 - path.size(), 0);
  }
  std::uint32_t ncmds = 4 + static_cast<std::uint32_t>(shape.libraries.size()) + !shape.constSection.empty();
  if (shape.extraCommand != 0) { put32(cmds, shape.extraCommand); put32(cmds, 16); put64(cmds, 0); ++ncmds; }
  Bytes file;
  put32(file, kMagic64); put32(file, kCpuArm64); put32(file, 0); put32(file, 6);
  put32(file, ncmds); put32(file, static_cast<std::uint32_t>(cmds.size())); put32(file, 0); put32(file, 0);
  file.insert(file.end(), cmds.begin(), cmds.end());
  file.resize(kTextStart, 0);
  for (std::size_t i = 0; i < shape.codeSize; ++i) file.push_back(static_cast<std::uint8_t>(i * 7));
  file.resize(linkedit, 0);
  file.insert(file.end(), symbols.begin(), symbols.end());
  file.insert(file.end(), strings.begin(), strings.end());
  return file;
}

// The signature's place, from LC_CODE_SIGNATURE.
std::pair<std::size_t, std::size_t> signatureOf(const Bytes& file) {
  const auto command = parseImage(file).find(kCodeSignature);
  return command ? std::make_pair<std::size_t, std::size_t>(le32(file, command->offset + 8), le32(file, command->offset + 12))
                 : std::make_pair<std::size_t, std::size_t>(0, 0);
}

std::string joined(const std::vector<std::string>& problems) {
  std::string out;
  for (const std::string& p : problems) out += p + "\n";
  return out;
}

TEST(MachOSigner, SignsEveryPageUpToTheSignatureAndCatchesAChangedPage) {
  for (std::size_t codeSize : {std::size_t{1}, 4096 - kTextStart, std::size_t{3 * 4096 + 5}, std::size_t{40 * 4096}}) {
    SCOPED_TRACE(codeSize);
    ImageShape shape;
    shape.codeSize = codeSize;
    const Bytes signed1 = sign(build(shape), "com.example.test");
    EXPECT_EQ(joined(checkForPhone(signed1, iosVersion(7, 0))), "");
    const auto [offset, size] = signatureOf(signed1);
    EXPECT_EQ(offset + size, signed1.size());
    const CodeDirectory cd = readCodeDirectory(signed1, offset, size);
    EXPECT_EQ(cd.codeLimit, offset);
    EXPECT_EQ(cd.nCodeSlots, (offset + 4095) / 4096);
    EXPECT_EQ(cd.identifier, "com.example.test");
    // Signing again replaces the signature: nothing grows.
    EXPECT_EQ(sign(signed1, "com.example.test"), signed1);
    // A byte changed after signing, in the last page of code.
    Bytes changed = signed1;
    changed[offset - 1] ^= 1;
    EXPECT_NE(joined(checkForPhone(changed, iosVersion(7, 0))).find("page " + std::to_string((offset - 1) / 4096) + " "),
              std::string::npos);
  }
}

TEST(MachOCheck, RefusesWhatTheFirmwareWouldRefuse) {
  using ImageChange = std::function<void(ImageShape&)>;
  using ByteChange = std::function<void(Bytes&, std::size_t /* CodeDirectory */)>;
  auto setBe32 = [](Bytes& b, std::size_t at, std::uint32_t v) { for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (24 - 8 * i)); };
  const struct {
    const char* expected;
    ImageChange shape;
    ByteChange bytes;
  } cases[] = {
      // SHA-256 as ld64.lld writes it, with as many slots as fit.
      {"hash type 2 of 32 bytes", nullptr, [&](Bytes& b, std::size_t cd) { b[cd + 36] = 32; b[cd + 37] = 2; setBe32(b, cd + 24, 0); setBe32(b, cd + 28, 1); }},
      {"the signature is truncated", nullptr, [&](Bytes& b, std::size_t cd) { setBe32(b, cd - 28 + 4, 1 << 20); }},
      {"the CodeDirectory is truncated", nullptr, [&](Bytes& b, std::size_t cd) { setBe32(b, cd + 4, 1 << 20); }},
      {"identifier is truncated", nullptr, [&](Bytes& b, std::size_t cd) { setBe32(b, cd + 20, 1 << 20); }},
      {"hash slots are truncated", nullptr, [&](Bytes& b, std::size_t cd) { setBe32(b, cd + 28, 1 << 20); }},
      {"requirements do not match", nullptr, [](Bytes& b, std::size_t cd) { b[cd - 28 + be32(b, cd - 28 + 24) + 8] ^= 1; }},
      // LC_SOURCE_VERSION, as long as LC_CODE_SIGNATURE, in its place.
      {"no code signature", nullptr, [](Bytes& b, std::size_t) { putLe(b, parseImage(b).find(kCodeSignature)->offset, 0x2a, 4); }},
      {"runs past the end", nullptr, [](Bytes& b, std::size_t) { b.resize(40); }},
      {"says 8.0, not 7.0", [](ImageShape& s) { s.versionMin = iosVersion(8, 0); }, nullptr},
      {"LC_DYLD_CHAINED_FIXUPS", [](ImageShape& s) { s.extraCommand = kDyldChainedFixups; }, nullptr},
      {"__DATA_CONST,__objc_classlist", [](ImageShape& s) { s.constSection = "__objc_classlist"; }, nullptr},
      {"loads /usr/lib/swift/libswiftCore.dylib", [](ImageShape& s) { s.libraries.push_back("/usr/lib/swift/libswiftCore.dylib"); }, nullptr},
      {"sized operator delete", [](ImageShape& s) { s.imports.emplace_back("__ZdlPvm", 2, 0); }, nullptr},
      {"std::bad_array_new_length", [](ImageShape& s) { s.imports.emplace_back("__ZTISt20bad_array_new_length", 2, 0); }, nullptr},
      {"looked up at run time", [](ImageShape& s) { s.imports.emplace_back("_MSHookMessageEx", 1, 0); }, nullptr},
      {"from no library", [](ImageShape& s) { s.imports.emplace_back("_anything", 0xff, 0); }, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    ImageShape shape;
    if (c.shape) c.shape(shape);
    Bytes file = sign(build(shape), "com.example.test");
    if (c.bytes) c.bytes(file, signatureOf(file).first + 28);
    EXPECT_NE(joined(checkForPhone(file, iosVersion(7, 0))).find(c.expected), std::string::npos)
        << joined(checkForPhone(file, iosVersion(7, 0)));
  }
  // Weakly imported, a later symbol is no obstacle: dyld binds it to 0.
  ImageShape weak;
  weak.imports.emplace_back("__ZdlPvm", 2, 0x0040);
  EXPECT_EQ(joined(checkForPhone(sign(build(weak), "x"), iosVersion(7, 0))), "");
}

}  // namespace
}  // namespace hushwall::macho
