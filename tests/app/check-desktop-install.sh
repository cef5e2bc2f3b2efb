#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a desktop needs from it: the program,
# a valid launcher entry, valid AppStream metainfo and the icon at every hicolor size.
# Usage: check-desktop-install.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

fail=0
expect() { [[ -e "$prefix/$1" ]] || { echo "missing: $1"; fail=1; }; }
expect bin/twinsift
expect share/applications/twinsift.desktop
expect share/metainfo/app.twinsift.Twinsift.metainfo.xml
expect share/icons/hicolor/scalable/apps/twinsift.svg
for size in 16 22 24 32 48 64 128 256 512; do
    png=share/icons/hicolor/${size}x${size}/apps/twinsift.png
    expect "$png"
    # Width and height from the PNG header.
    if [[ -e "$prefix/$png" ]]; then
        dims=$(od -An -tu1 -j16 -N8 "$prefix/$png" | awk '{print $3*256+$4 "x" $7*256+$8}')
        [[ "$dims" == "${size}x${size}" ]] || { echo "$png is $dims"; fail=1; }
    fi
done
[[ -x "$prefix/bin/twinsift" ]] || { echo "bin/twinsift is not executable"; fail=1; }

# The launcher must name what was installed.
desktop="$prefix/share/applications/twinsift.desktop"
grep -qx 'Exec=twinsift' "$desktop" || { echo "Exec does not start twinsift"; fail=1; }
grep -qx 'Icon=twinsift' "$desktop" || { echo "Icon is not the installed icon"; fail=1; }

if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$desktop" || fail=1
else
    echo "desktop-file-validate not installed: entry not validated"
fi
if command -v appstreamcli >/dev/null; then
    appstreamcli validate --no-net "$prefix/share/metainfo/app.twinsift.Twinsift.metainfo.xml" || fail=1
else
    echo "appstreamcli not installed: metainfo not validated"
fi
[[ $fail -eq 0 ]] && echo "desktop integration installed and valid"
exit $fail
