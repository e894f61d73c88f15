// Functions that not every phone has, found by name in the running process
// instead of being linked: a strong import of a symbol that dyld cannot
// find makes it refuse the whole library, in SpringBoard and WhatsApp
// alike. Each caller treats a missing function as the failure it already
// handles (no hook installed, no person found).
#ifndef HUSHWALL_PLATFORM_DARWIN_OPTIONAL_SYMBOLS_H_
#define HUSHWALL_PLATFORM_DARWIN_OPTIONAL_SYMBOLS_H_

#include <objc/runtime.h>

namespace hushwall::darwin {

// Substrate's MSHookMessageEx: present only where the loader that injected
// us is Substrate (or a compatible one that exports the same name).
using HookMessageFunction = void (*)(Class cls, SEL selector, IMP replacement, IMP* original);
HookMessageFunction substrateHookMessage();

// AddressBook's private ABCFindPersonMatchingPhoneNumber(book, number, 0, 0):
// not in the SDK's headers, and exported for arm64 only on some firmware.
using FindPersonFunction = const void* (*)(const void* addressBook, const void* phoneNumber,
                                           int identifier, int uid);
FindPersonFunction addressBookFindPerson();

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_OPTIONAL_SYMBOLS_H_
