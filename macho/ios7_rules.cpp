#include "macho/ios7_rules.h"

#include <cstddef>
#include <iterator>

namespace hushwall::macho {

const ShippedLibrary kIos7Libraries[] = {
    {"/usr/lib/libSystem.B.dylib",
     "the C library and the dynamic loader's runtime, in every firmware"},
    {"/usr/lib/libobjc.A.dylib", "the Objective-C runtime, in every firmware"},
    {"/usr/lib/libc++.1.dylib",
     "libc++, the system's C++ library since iOS 5 (the SDK's libc++ markup starts there)"},
    {"/usr/lib/libsqlite3.dylib", "SQLite, public since iPhone OS 2"},
    {"/System/Library/Frameworks/CoreFoundation.framework/CoreFoundation",
     "public since iPhone OS 2"},
    {"/System/Library/Frameworks/Foundation.framework/Foundation", "public since iPhone OS 2"},
    {"/System/Library/Frameworks/UIKit.framework/UIKit", "public since iPhone OS 2"},
    {"/System/Library/Frameworks/AudioToolbox.framework/AudioToolbox", "public since iPhone OS 2"},
    {"/System/Library/Frameworks/AddressBook.framework/AddressBook",
     "public since iPhone OS 2 (deprecated only in iOS 9)"},
    {"/System/Library/PrivateFrameworks/Preferences.framework/Preferences",
     "the Settings app's own framework; PSListController is in the iOS 7 and 8 class dumps "
     "(MP0w/iOS-Headers)"},
};
const std::size_t kIos7LibraryCount = std::size(kIos7Libraries);

const LaterSymbol kLaterCxxSymbols[] = {
    // _LIBCPP_AVAILABILITY_SIZED_NEW_DELETE: ios 10.0.
    {"^_Zd[la]Pvm$", iosVersion(10, 0), "sized operator delete"},
    // Clang refuses aligned allocation below iOS 11 (its aligned-allocation
    // availability rule); libc++ exports the align_val_t overloads from then.
    {"St11align_val_t", iosVersion(11, 0), "aligned operator new and delete"},
    // _LIBCPP_AVAILABILITY_UNCAUGHT_EXCEPTIONS: ios 10.0.
    {"^_ZSt19uncaught_exceptionsv$", iosVersion(10, 0), "std::uncaught_exceptions"},
    // _LIBCPP_AVAILABILITY_BAD_OPTIONAL_ACCESS, _BAD_VARIANT_ACCESS,
    // _BAD_ANY_CAST: ios 11.0.
    {"bad_optional_access", iosVersion(11, 0), "std::bad_optional_access"},
    {"bad_variant_access", iosVersion(11, 0), "std::bad_variant_access"},
    {"bad_any_cast", iosVersion(11, 0), "std::bad_any_cast"},
    // _LIBCPP_AVAILABILITY_SHARED_MUTEX: ios 10.0.
    {"shared_(timed_)?mutex", iosVersion(10, 0), "std::shared_mutex, std::shared_timed_mutex"},
    // _LIBCPP_AVAILABILITY_FILESYSTEM, and _TO_CHARS defined as it: ios 13.0.
    {"__fs10filesystem", iosVersion(13, 0), "std::filesystem"},
    {"to_chars", iosVersion(13, 0), "std::to_chars"},
    // _LIBCPP_AVAILABILITY_SYNC: ios 14.0 (atomic wait, barrier, latch, semaphore).
    {"__libcpp_atomic_wait|__cxx_atomic_notify|__libcpp_atomic_monitor|__barrier_algorithm_base",
     iosVersion(14, 0), "the C++20 synchronisation library"},
    // _LIBCPP_AVAILABILITY_FORMAT: unavailable everywhere.
    {"format_error", kNever, "std::format"},
    // _LIBCPP_AVAILABILITY_TYPEINFO_VTABLE, _LOCALE_CATEGORY,
    // _ATOMIC_SHARED_PTR: ios 7.0, so allowed from 7.0 on but not below.
    {"^_ZTVSt9type_info$", iosVersion(7, 0), "std::type_info's vtable"},
    {"^_ZNSt3__16locale(7collate|5ctype|8monetary|7numeric|4time|8messages|3all|4none)E$",
     iosVersion(7, 0), "std::locale's category constants"},
    {"__get_sp_mut", iosVersion(7, 0), "atomic operations on std::shared_ptr"},
    // _LIBCPP_AVAILABILITY_FUTURE_ERROR: ios 6.0.
    {"future_error|future_category", iosVersion(6, 0), "std::future_error"},
    // LLVM 14's allocator<T>::allocate throws it on overflow. No markup
    // dates it and no SDK at hand is as old as iOS 7 (the oldest, 9.3,
    // lists it), so its presence in iOS 7's libc++abi is not shown: the
    // phone build defines the class itself (device/cxx_runtime/).
    {"St20bad_array_new_length", kNever, "std::bad_array_new_length"},
};
const std::size_t kLaterCxxSymbolCount = std::size(kLaterCxxSymbols);

const char* const kLookedUpAtRunTime[] = {
    "_MSHookMessageEx",                   // Substrate's, present only with it
    "_ABCFindPersonMatchingPhoneNumber",  // AddressBook's private function
};
const std::size_t kLookedUpAtRunTimeCount = std::size(kLookedUpAtRunTime);

}  // namespace hushwall::macho
