# Targets for the device adapter on Linux:
#  hushwall_gnustep  the stand-in for the phone's Apple-only functions
#                    (Substrate, the Darwin notify center, the address book,
#                    audio services, the bits of UIKit the tweak touches)
#  HushwallDevice    the adapter with the logic: what Hushwall.dylib is on
#                    the phone, loaded by the Objective-C hosts in objchost/
execute_process(COMMAND ${HUSHWALL_GNUSTEP_CONFIG} --variable=GNUSTEP_SYSTEM_HEADERS
                OUTPUT_VARIABLE GNUSTEP_HEADERS OUTPUT_STRIP_TRAILING_WHITESPACE)
find_program(HUSHWALL_GCC NAMES gcc REQUIRED)
# GCC's Objective-C runtime headers live with GCC's own headers; asked for
# last, so that clang's built-in headers of the same names win.
execute_process(COMMAND ${HUSHWALL_GCC} -print-file-name=include
                OUTPUT_VARIABLE GCC_RUNTIME_HEADERS OUTPUT_STRIP_TRAILING_WHITESPACE)
find_library(HUSHWALL_GNUSTEP_BASE gnustep-base REQUIRED)
# GCC's runtime library sits with GCC (libobjc-12-dev).
execute_process(COMMAND ${HUSHWALL_GCC} -print-file-name=libobjc.so
                OUTPUT_VARIABLE HUSHWALL_GNU_OBJC OUTPUT_STRIP_TRAILING_WHITESPACE)

# CMake knows no soname flag for Objective-C++; without one the programs
# would record the libraries by their build paths.
set(CMAKE_SHARED_LIBRARY_SONAME_OBJCXX_FLAG "-Wl,-soname,")

add_library(hushwall_objc_flags INTERFACE)
target_compile_options(hushwall_objc_flags INTERFACE
  $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-runtime=gcc -fblocks -fconstant-string-class=NSConstantString
   -fexceptions -fobjc-exceptions -idirafter ${GCC_RUNTIME_HEADERS} -Wno-unused-parameter>)
target_compile_definitions(hushwall_objc_flags INTERFACE
  GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS HUSHWALL_GNUSTEP=1)
target_include_directories(hushwall_objc_flags INTERFACE
  ${CMAKE_SOURCE_DIR}/platform/gnustep/include ${GNUSTEP_HEADERS})
# libBlocksRuntime before GNUstep: GNUstep's library carries fallback block
# functions of its own whose _Block_copy leaves clang's blocks on the stack,
# and a process takes each symbol from the first library that has it.
target_link_libraries(hushwall_objc_flags INTERFACE
  ${HUSHWALL_BLOCKS_RUNTIME} ${HUSHWALL_GNUSTEP_BASE} ${HUSHWALL_GNU_OBJC})

file(GLOB GNUSTEP_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/gnustep/*.mm)
add_library(hushwall_gnustep SHARED ${GNUSTEP_SOURCES})
target_link_libraries(hushwall_gnustep PUBLIC hushwall_objc_flags hushwall_linux)

file(GLOB DARWIN_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/darwin/*.mm)
# The load-time initialiser last: see the file for why.
add_library(HushwallDevice SHARED ${DARWIN_SOURCES}
            ${CMAKE_SOURCE_DIR}/platform/darwin/exception_barrier.cpp
            ${CMAKE_SOURCE_DIR}/platform/darwin/load_time_initializer.cpp)
target_link_libraries(HushwallDevice PRIVATE -Wl,--whole-archive hushwall_core
                      -Wl,--no-whole-archive hushwall_host hushwall_gnustep SQLite::SQLite3)

# The phone's own variant of the device paths is linked into nothing here;
# compiling it keeps it from rotting unseen until a Theos build.
add_library(hushwall_ios_paths OBJECT ${CMAKE_SOURCE_DIR}/platform/darwin/ios/device_paths.mm)
target_link_libraries(hushwall_ios_paths PRIVATE hushwall_objc_flags)
