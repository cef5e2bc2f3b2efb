#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing need, and nothing when they are
# all present already. Usage: scripts/install-deps.sh run|test|bench
set -euo pipefail

build=(cmake g++ make ninja-build pkg-config qt6-base-dev libqt6sql6-sqlite libxxhash-dev qt6-pdf-dev libqt6svg6
       qt6-image-formats-plugins shared-mime-info fonts-dejavu-core adwaita-icon-theme hicolor-icon-theme xdg-utils
       dbus-daemon dpkg-dev)
tests=(xvfb xauth xdotool imagemagick desktop-file-utils appstream groff-base bash-completion acl)
bench=(jdupes rmlint hyperfine python3 time)

want=("${build[@]}")
case "${1:-run}" in
    run) ;;
    test) want+=("${tests[@]}") ;;
    bench) want+=("${tests[@]}" "${bench[@]}") ;;
    *) echo "usage: $0 run|test|bench" >&2; exit 2 ;;
esac

missing=()
for package in "${want[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
    echo "Packages are missing and this is not root; run: sudo $0 ${1:-run}" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
