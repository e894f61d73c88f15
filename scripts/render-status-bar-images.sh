#!/usr/bin/env bash
# Renders the status-bar images of "HSWL" from device/images/HSWL.svg into
# the package's layout folder, which Theos and scripts/package-device.sh
# both copy into the package as it is. The PNGs are committed; run this
# after changing the drawing (needs librsvg2-bin's rsvg-convert).
#
# Where and under which names: SpringBoard's addStatusBarImageNamed:@"HSWL"
# makes a custom status-bar item, and on iOS 7 and 8 UIKit draws it from an
# image among UIKit.framework's own resources whose name is the item's
# name behind the prefix of the bar's look: "Black_ON_" on the light bars
# (UIKit tints it for other foreground colours), "White_ON_" on dark ones,
# "LockScreen_ON_" on the lock screen, each at the screen's scale. The
# SpringBoard.app pair "Default_" / "FSO_" of iOS 6 and earlier lies
# outside the firmware range of the package and is not shipped.
# Why UIKit.framework: the bar's foreground style names the image
# (-[UIStatusBarForegroundStyleAttributes expandedNameForImageName:], as
# the public theos/headers declare it) and UIKit loads that name from its
# own bundle (+[UIImage kitImageNamed:]); libstatusbar's item view draws
# its custom items the same way on iOS 7 and later. The three prefixes are
# the looks of those styles; no device was at hand to confirm them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
source_svg=$root/device/images/HSWL.svg
out=$root/device/layout/System/Library/Frameworks/UIKit.framework
command -v rsvg-convert >/dev/null || {
  echo "render-status-bar-images: needs rsvg-convert (apt-get install librsvg2-bin)" >&2
  exit 2
}
mkdir -p "$out"
white=$(mktemp --suffix=.svg)
trap 'rm -f "$white"' EXIT
sed 's/#000000/#FFFFFF/g' "$source_svg" >"$white"

for scale in 1 2 3; do
  suffix=$([[ $scale == 1 ]] && echo "" || echo "@${scale}x")
  for variant in Black White LockScreen; do
    svg=$([[ $variant == Black ]] && echo "$source_svg" || echo "$white")
    rsvg-convert --zoom "$scale" --format png "$svg" >"$out/${variant}_ON_HSWL$suffix.png"
  done
done
ls "$out"
