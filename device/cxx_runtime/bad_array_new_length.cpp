// std::bad_array_new_length, defined in the phone's binaries themselves.
//
// LLVM 14's std::allocator<T>::allocate throws it when asked for more than
// max_size() elements, so every vector and string drags in its
// constructor, destructor and type_info, which the binary would import
// from the system's libc++abi. Whether iOS 7's libc++abi exports them is
// not shown: libc++'s availability markup does not date the class, and the
// oldest public SDK (iPhoneOS9.3.sdk, whose libc++abi.tbd lists it) is
// newer than the firmware. dyld refuses a library with a missing import
// outright, in SpringBoard and in WhatsApp alike, so the three members
// (the only ones not inline in <new>) are defined here and the static
// linker binds the library's own copy. Its type_info derives from
// std::bad_alloc's, which every firmware's libc++abi has, so a
// `catch (const std::bad_alloc&)` still catches it. hushwall-macho check
// refuses the import, should a build ever lose this file.
#include <new>

namespace std {

bad_array_new_length::bad_array_new_length() noexcept {}

bad_array_new_length::~bad_array_new_length() noexcept {}

const char* bad_array_new_length::what() const noexcept { return "bad_array_new_length"; }

}  // namespace std
