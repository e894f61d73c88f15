#!/usr/bin/env bash
# Renders the package's images from their drawings in device/images/ (needs
# librsvg2-bin's rsvg-convert). The PNGs are committed; run this after
# changing a drawing. Theos and scripts/package-device.sh both copy them
# into the package as they are.
#
# The status-bar icon "HSWL" (HSWL.svg), into the layout folder's
# UIKit.framework. On iOS 7 and 8 -[UIApplication addStatusBarImageNamed:]
# draws nothing by itself: libstatusbar (the package's dependency) makes the
# custom status-bar item and draws it. Its item view on iOS 7 and later
# (UIStatusBarCustomItemView.mm, contentsImage, in the public
# phoenix3200/libstatusbar source; its README's "7.x style" says the same)
# first looks in UIKit.framework for a coloured image
# "{LockScreen,Black,White}_<name>_Color", and otherwise for
# "Black_<name>" on the status bar and "LockScreen_<name>" on the lock
# screen (the names UIKit's foreground style expands the item's name to),
# which it tints to the bar's colour: one black drawing serves light and
# dark bars alike. So "Black_HSWL" and "LockScreen_HSWL", black, at each
# screen scale (@2x on Retina screens, @3x on the iPhone 6 Plus).
#
# The Settings row's icon (Settings.svg), 29 x 29 points, into the settings
# bundle's resources as icon.png, which the PreferenceLoader entry names.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
images=$root/device/images
status_bar=$root/device/layout/System/Library/Frameworks/UIKit.framework
bundle=$root/device/HushwallSettings/Resources
command -v rsvg-convert >/dev/null || {
  echo "render-images: needs rsvg-convert (apt-get install librsvg2-bin)" >&2
  exit 2
}
mkdir -p "$status_bar"
rm -f "$status_bar"/*.png "$bundle"/icon*.png

for scale in 1 2 3; do
  suffix=$([[ $scale == 1 ]] && echo "" || echo "@${scale}x")
  for look in Black LockScreen; do
    rsvg-convert --zoom "$scale" --format png "$images/HSWL.svg" >"$status_bar/${look}_HSWL$suffix.png"
  done
  rsvg-convert --zoom "$scale" --format png "$images/Settings.svg" >"$bundle/icon$suffix.png"
done
ls "$status_bar" "$bundle"
