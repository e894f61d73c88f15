#!/usr/bin/env bash
# Builds the phone's Debian package on Linux, without Theos, from Debian
# packages only (clang-14, lld-14's ld64.lld, llvm-14, libc++-14-dev's
# headers, dpkg-deb, sqlite3, and g++ with libssl-dev for the project's own
# signer, macho/) and an iPhoneOS SDK that the caller provides:
#
#   scripts/package-device.sh --sdk DIR [--out DIR]
#   scripts/package-device.sh --list-sources tweak|settings
#   scripts/package-device.sh --control
#
# DIR is an iPhoneOS SDK folder (for example iPhoneOS14.5.sdk from the
# public theos/sdks repository). The package lands in build-device/ (or
# --out) as com.corvanta.hushwall_<version>_iphoneos-arm.deb, laid out as
# the README's table says. The sources come from device/tweak.sources and
# device/settings.sources, the lists that device/Makefile (Theos) reads too.
# Each binary is signed for iOS 7 and 8 and checked for what that firmware
# would refuse (macho/hushwall_macho.cpp); a problem fails the build.
# --list-sources prints a list's sources, as this script reads it;
# --control the package's control file (without Installed-Size). Neither
# needs an SDK.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
device=$root/device

die() {
  echo "package-device: $*" >&2
  exit 2
}

usage() {
  sed -n '2,20p' "$0" | sed 's/^# \{0,1\}//'
}

# --- the source lists ----------------------------------------------------

# The lines of a list, without comments and blanks.
list_lines() {
  sed -e 's/[[:space:]]*#.*//' -e 's/^[[:space:]]*//' -e 's/[[:space:]]*$//' -e '/^$/d' "$1"
}

# The sources a list names, one absolute path a line, in the list's order:
# each pattern expanded relative to the repository root, tests and the
# "!" lines' files left out.
list_sources() {
  local list=$1 line file
  local -a patterns=() excluded=()
  while IFS= read -r line; do
    case $line in
      framework:* | private-framework:* | library:*) ;;
      '!'*) excluded+=("${line#!}") ;;
      *) patterns+=("$line") ;;
    esac
  done < <(list_lines "$list")
  local pattern out
  (
    cd "$root"
    shopt -s nullglob
    for pattern in "${patterns[@]}"; do
      for file in $pattern; do
        case $file in *_test.cpp | *_test.mm) continue ;; esac
        out=$file
        for line in "${excluded[@]}"; do
          # shellcheck disable=SC2053  # the exclusion is a pattern
          [[ $file == $line ]] && out=
        done
        [[ -n $out ]] && echo "$root/$out"
      done
    done
  )
}

# The names of a list's "<kind>:" lines (framework, private-framework,
# library).
list_links() {
  list_lines "$1" | sed -n "s/^$2:[[:space:]]*//p"
}

# --- the control file ----------------------------------------------------

# The one difference from the control file of a Theos build, which is
# device/control as it is and carries armv7 too: built for arm64 only, this
# package depends on cy+cpu.arm64, the virtual package that Cydia of that
# generation provides on 64-bit devices only, so that a 32-bit device
# refuses it with a reason instead of installing a tweak that never loads;
# and its description names the devices it runs on.
arm64_control() {
  sed -e '/^Depends:/s/$/, cy+cpu.arm64/' \
    -e '/^Description:/s/iPhone, iPad and iPod touch$/64-bit devices (iPhone 5s, iPad Air, iPad mini 2 and later)/' \
    "$device/control"
}
# --- arguments -----------------------------------------------------------

sdk=
out=$root/build-device
while (($#)); do
  case $1 in
    --sdk)
      (($# >= 2)) || die "--sdk needs a directory"
      sdk=$2
      shift 2
      ;;
    --out)
      (($# >= 2)) || die "--out needs a directory"
      out=$2
      shift 2
      ;;
    --control)
      arm64_control
      exit 0
      ;;
    --list-sources)
      (($# >= 2)) || die "--list-sources needs tweak or settings"
      case $2 in
        tweak | settings) list_sources "$device/$2.sources" ;;
        *) die "--list-sources: no list named '$2' (tweak, settings)" ;;
      esac
      exit 0
      ;;
    -h | --help)
      usage
      exit 0
      ;;
    *) die "unknown argument '$1' (see --help)" ;;
  esac
done

[[ -n $sdk ]] || die "no SDK given: --sdk DIR, an iPhoneOS SDK folder such as iPhoneOS14.5.sdk"
[[ -d $sdk ]] || die "--sdk '$sdk' is not a directory"
sdk=$(cd "$sdk" && pwd)
if [[ ! -f $sdk/SDKSettings.plist && ! -f $sdk/SDKSettings.json ]] ||
  [[ ! -d $sdk/System/Library/Frameworks/UIKit.framework ]] ||
  [[ ! -e $sdk/usr/lib/libobjc.tbd && ! -e $sdk/usr/lib/libobjc.dylib ]]; then
  die "--sdk '$sdk' is not an iPhoneOS SDK (no SDKSettings, UIKit.framework or usr/lib/libobjc)"
fi
grep -q -i iphoneos "$sdk"/SDKSettings.* 2>/dev/null ||
  die "--sdk '$sdk' is an SDK, but not an iPhoneOS one"

# --- tools ---------------------------------------------------------------

libcxx_headers=/usr/lib/llvm-14/include/c++/v1
tools_present() {
  command -v clang++-14 >/dev/null && command -v dpkg-deb >/dev/null &&
    command -v sqlite3 >/dev/null && command -v llvm-nm-14 >/dev/null &&
    command -v llvm-otool-14 >/dev/null && command -v make >/dev/null &&
    { command -v ld64.lld-14 >/dev/null || [[ -x /usr/lib/llvm-14/bin/ld64.lld ]]; } &&
    [[ -f $libcxx_headers/optional ]] && command -v g++ >/dev/null &&
    [[ -f /usr/include/openssl/evp.h ]]
}
if ! tools_present; then
  # Only the packaging needs these, so the test build does not install them.
  packages=(clang-14 lld-14 llvm-14 libc++-14-dev dpkg sqlite3 make g++ libssl-dev)
  if [[ $(id -u) -ne 0 ]]; then
    die "missing tools; as root: apt-get install ${packages[*]}"
  fi
  echo "package-device: installing ${packages[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${packages[@]}" >/dev/null
  tools_present || die "tools still missing after installing ${packages[*]}"
fi
lld=$(command -v ld64.lld-14 || echo /usr/lib/llvm-14/bin/ld64.lld)

# --- what to build -------------------------------------------------------

# The firmware the hook table's methods exist on (startup/hook_table.cpp)
# starts at iOS 7.0; the control file says the same. 64-bit only: no
# Debian ld64.lld links 32-bit ARM Mach-O, so the iPhone 4s, 5 and 5c are
# left to a Theos build (device/Makefile builds armv7 as well). In LLVM 13
# to 16 its ARM support was never finished: every pointer and movw/movt
# relocation stops it ("VANILLA relocation must be extern"), and even a
# lone call to an outside function ("TODO: implement this"); LLVM 19 and
# later refuse "-arch armv7" outright. The SDK is not the obstacle: its
# .tbd files list armv7 for every library the package links.
arch=arm64
min_os=7.0
version=$(sed -n 's/^Version: *//p' "$device/control")
package=$(sed -n 's/^Package: *//p' "$device/control")
[[ -n $version && -n $package ]] || die "device/control names no Package or Version"

work=$out/work
stage=$work/stage
rm -rf "$work"
mkdir -p "$work/obj" "$stage"

target=(-target "$arch-apple-ios$min_os" -isysroot "$sdk")
# Manual reference counting throughout, as the adapter is written; the
# deployment target's availability checks stay errors.
common=("${target[@]}" -I"$root" -O2 -fno-objc-arc -Wall -Wextra -Werror
  -Wno-unused-parameter -Wunguarded-availability)
cxx=(-std=c++17 -stdlib=libc++ -nostdinc++ -isystem "$libcxx_headers")

# Compiles one source into $work/obj; prints the object's path.
compile() {
  local source=$1 object
  object=$work/obj/${source#"$root"/}.o
  mkdir -p "$(dirname "$object")"
  case $source in
    *.cpp) clang++-14 "${common[@]}" "${cxx[@]}" -c "$source" -o "$object" ;;
    *.mm) clang++-14 "${common[@]}" "${cxx[@]}" -c "$source" -o "$object" ;;
    *.m) clang-14 "${common[@]}" -c "$source" -o "$object" ;;
    *) die "$source: not a .cpp, .mm or .m source" ;;
  esac
}

# Compiles a list's sources, two at a time per core; writes the objects,
# in the list's order, to the file $2.
compile_list() {
  local list=$1 source jobs=0 failed=0
  local -a sources objects=()
  mapfile -t sources < <(list_sources "$list")
  ((${#sources[@]} > 0)) || die "$list names no source"
  for source in "${sources[@]}"; do
    compile "$source" &
    objects+=("$work/obj/${source#"$root"/}.o")
    if ((++jobs >= $(nproc) * 2)); then
      wait -n || failed=1
      ((jobs--))
    fi
  done
  while ((jobs > 0)); do
    wait -n || failed=1
    ((jobs--))
  done
  ((failed == 0)) || die "compiling $(basename "$list") failed"
  printf '%s\n' "${objects[@]}" >"$2"
}

# Linker arguments for a list's framework, private-framework and library
# lines.
link_arguments() {
  local name
  while read -r name; do echo "-framework" "$name"; done < <(list_links "$1" framework)
  if [[ -n $(list_links "$1" private-framework) ]]; then
    echo "-F$sdk/System/Library/PrivateFrameworks"
    while read -r name; do echo "-framework" "$name"; done < <(list_links "$1" private-framework)
  fi
  while read -r name; do echo "-l$name"; done < <(list_links "$1" library)
}

# ld64.lld, with the platform version load command for the deployment
# target, and unsigned: its own ad-hoc signature is SHA-256, which the
# kernels of iOS 7 and 8 refuse; sign() below adds a SHA-1 one.
# shellcheck disable=SC2054  # the commas belong to the -Wl, options
link=(clang++-14 "${target[@]}" -stdlib=libc++ -fuse-ld="$lld" -mlinker-version=711
  -Wl,-no_adhoc_codesign -Wl,-dead_strip)

# The project's signer and checker, built for this machine.
macho_tool=$work/hushwall-macho
mapfile -t macho_sources < <(find "$root/macho" -name '*.cpp' ! -name '*_test.cpp')
g++ -std=c++17 -O2 -Wall -Wextra -Werror -I"$root" "${macho_sources[@]}" -lcrypto -o "$macho_tool" ||
  die "building hushwall-macho failed"

# Ad-hoc signs a binary with a SHA-1 CodeDirectory under an identifier.
sign() {
  "$macho_tool" sign --identifier "$2" "$1" || die "signing $(basename "$1") failed"
}

echo "package-device: building Hushwall.dylib ($arch, iOS $min_os and later)"
compile_list "$device/tweak.sources" "$work/tweak.objects"
mapfile -t tweak_objects <"$work/tweak.objects"
dylib=$work/Hushwall.dylib
# shellcheck disable=SC2046  # one argument per word
"${link[@]}" -dynamiclib -install_name /Library/MobileSubstrate/DynamicLibraries/Hushwall.dylib \
  "${tweak_objects[@]}" $(link_arguments "$device/tweak.sources") -o "$dylib"
sign "$dylib" "$package"

echo "package-device: building the settings bundle"
compile_list "$device/settings.sources" "$work/settings.objects"
mapfile -t settings_objects <"$work/settings.objects"
bundle_binary=$work/HushwallSettings
# shellcheck disable=SC2046
"${link[@]}" -bundle "${settings_objects[@]}" $(link_arguments "$device/settings.sources") \
  -o "$bundle_binary"
sign "$bundle_binary" "$(sed -n '/CFBundleIdentifier/{n;s/.*<string>\(.*\)<\/string>.*/\1/p}' \
  "$device/HushwallSettings/Resources/Info.plist")"

# --- what the phone must be able to load ---------------------------------

# What dyld and the kernel of iOS 7 would refuse: the architecture, the
# deployment target, a SHA-1 signature whose every page matches, dyld info
# that old dyld reads, Objective-C sections where its runtime looks, and
# imports only from libraries and parts of the C++ library that iOS 7
# ships (macho/ios7_rules.cpp lists them, each with its reason). A strong
# import of a missing symbol makes dyld refuse the whole library, in
# SpringBoard and in WhatsApp.
"$macho_tool" check --min-ios "$min_os" "$dylib" "$bundle_binary" ||
  die "a binary would not load on iOS $min_os (above)"

# --- the package ---------------------------------------------------------

echo "package-device: staging the package"
# Theos's layout folder first: it holds the PreferenceLoader entry and the
# status-bar images, exactly as a Theos build copies it.
cp -R "$device/layout/." "$stage/"
install -D -m 0755 "$dylib" "$stage/Library/MobileSubstrate/DynamicLibraries/Hushwall.dylib"
install -D -m 0644 "$device/Hushwall.plist" \
  "$stage/Library/MobileSubstrate/DynamicLibraries/Hushwall.plist"
bundle=$stage/Library/PreferenceBundles/HushwallSettings.bundle
install -D -m 0755 "$bundle_binary" "$bundle/HushwallSettings"
cp -R "$device/HushwallSettings/Resources/." "$bundle/"
# The template database, by the very rule the Theos build stages it with.
make -s -f "$device/HushwallSettings/template_db.mk" "$bundle/HSWL.db"
mkdir -p "$stage/DEBIAN"
{
  arm64_control
  echo "Installed-Size: $(du -sk --exclude=DEBIAN "$stage" | cut -f1)"
} >"$stage/DEBIAN/control"
find "$stage" -type d -exec chmod 0755 {} +
find "$stage" -type f ! -perm -u+x -exec chmod 0644 {} +

deb=$out/${package}_${version}_iphoneos-arm.deb
rm -f "$deb"
# gzip: the dpkg of the firmware generation this targets reads it.
dpkg-deb --root-owner-group -Zgzip --build "$stage" "$deb" >/dev/null
echo "package-device: $deb"
