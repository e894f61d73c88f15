#import <Foundation/Foundation.h>

#include "platform/darwin/device_paths.h"
#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_values.h"

namespace hushwall::darwin {
namespace {

NSString* native(const host::Text& devicePath) { return HWNativePath(stringOf(devicePath)); }

host::OptText deviceText(NSString* nativePath) {
  if (nativePath == nil) return std::nullopt;
  return textOf(HWDevicePath(nativePath));
}

}  // namespace

std::string FoundationFileSystem::nativePath(const host::Text& devicePath) {
  return [native(devicePath) fileSystemRepresentation];
}

bool FoundationFileSystem::fileExists(const host::Text& devicePath) {
  return [[NSFileManager defaultManager] fileExistsAtPath:native(devicePath)];
}

bool FoundationFileSystem::removeItem(const host::Text& devicePath) {
  return [[NSFileManager defaultManager] removeItemAtPath:native(devicePath) error:nullptr];
}

bool FoundationFileSystem::createDirectory(const host::Text& devicePath) {
  return [[NSFileManager defaultManager] createDirectoryAtPath:native(devicePath)
                                   withIntermediateDirectories:YES
                                                    attributes:nil
                                                         error:nullptr];
}

bool FoundationFileSystem::copyItem(const host::Text& from, const host::Text& to) {
  return [[NSFileManager defaultManager] copyItemAtPath:native(from)
                                                 toPath:native(to)
                                                  error:nullptr];
}

bool FoundationFileSystem::writeAtomically(const host::Text& devicePath, const host::Bytes& bytes) {
  NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
  return [data writeToFile:native(devicePath) atomically:YES];
}

std::optional<host::Dict> FoundationFileSystem::dictionaryWithContentsOfFile(
    const host::Text& devicePath) {
  // What -[NSMutableDictionary initWithContentsOfFile:] does, spelled out:
  // GNUstep's own initWithContentsOfFile: reads only text property lists,
  // and the settings bundle writes binary ones.
  NSData* data = [NSData dataWithContentsOfFile:native(devicePath)];
  if (data == nil) return std::nullopt;
  id contents = [NSPropertyListSerialization propertyListWithData:data
                                                          options:NSPropertyListMutableContainers
                                                           format:nullptr
                                                            error:nullptr];
  if (![contents isKindOfClass:[NSDictionary class]]) return std::nullopt;
  return *valueOf(contents).dictionary();
}

std::optional<std::vector<host::Text>> FoundationFileSystem::contentsOfDirectory(
    const host::Text& devicePath) {
  NSArray* names = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:native(devicePath)
                                                                       error:nullptr];
  if (names == nil) return std::nullopt;
  std::vector<host::Text> texts;
  for (NSString* name in names) texts.push_back(textOf(name));
  return texts;
}

host::OptText FoundationBundles::mainBundleIdentifier() {
  NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
  if (identifier == nil) return std::nullopt;
  return textOf(identifier);
}

host::OptText FoundationBundles::bundlePath(const host::Text& devicePath) {
  return deviceText([[NSBundle bundleWithPath:native(devicePath)] bundlePath]);
}

host::OptText FoundationBundles::documentsDirectory() {
  NSArray* paths =
      NSSearchPathForDirectoriesInDomains(NSDocumentDirectory, NSUserDomainMask, YES);
  return deviceText([paths count] > 0 ? [paths objectAtIndex:0] : nil);
}

}  // namespace hushwall::darwin
