#!/usr/bin/env bash
# Checks what an installation of Twinsift puts on a system, either installed from a build folder into
# a temporary root (DESTDIR) or unpacked from its Debian package:
#   - exactly the expected files under /usr, the program executable, the icons at their sizes;
#   - the launcher entry starts the program with its icon and passes desktop-file-validate, and the
#     metainfo passes appstreamcli validate;
#   - the manual page formats without warnings and the bash completion offers the commands;
#   - for the package: it depends on Qt and apt could install it (a simulation, nothing changes).
# Usage: scripts/check-package.sh BUILD_FOLDER | PACKAGE.deb
set -euo pipefail
source=${1:?usage: $0 BUILD_FOLDER | PACKAGE.deb}
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
fail() { echo "check-package: $*" >&2; exit 1; }

if [[ $source == *.deb ]]; then
    dpkg-deb -x "$source" "$root"
    depends=$(dpkg-deb -f "$source" Depends)
    for needed in libqt6core6 libqt6widgets6 libqt6svg6 libc6; do
        [[ $depends == *"$needed"* ]] || fail "Depends lacks $needed: $depends"
    done
    if [[ $(id -u) -eq 0 ]]; then
        apt-get install --simulate --no-install-recommends "$(readlink -f "$source")" >/dev/null 2>"$root.apt" ||
            fail "apt cannot install $source: $(cat "$root.apt")"
        rm -f "$root.apt"
    fi
else
    DESTDIR="$root" cmake --install "$source" --prefix /usr >/dev/null
fi

expected="usr/bin/twinsift
usr/share/applications/twinsift.desktop
usr/share/bash-completion/completions/twinsift
usr/share/man/man1/twinsift.1.gz
usr/share/metainfo/app.twinsift.Twinsift.metainfo.xml
usr/share/icons/hicolor/scalable/apps/twinsift.svg"
for size in 16 22 24 32 48 64 128 256 512; do
    expected+=$'\n'"usr/share/icons/hicolor/${size}x${size}/apps/twinsift.png"
done
actual=$(cd "$root" && find . -type f -o -type l | sed 's|^\./||' | LC_ALL=C sort)
expected=$(LC_ALL=C sort <<<"$expected")
if [[ "$actual" != "$expected" ]]; then
    diff <(echo "$expected") <(echo "$actual") >&2 || true
    fail "the installed files differ from the expected list (< expected, > installed)"
fi
[[ -x "$root/usr/bin/twinsift" ]] || fail "usr/bin/twinsift is not executable"
for size in 16 22 24 32 48 64 128 256 512; do
    png=usr/share/icons/hicolor/${size}x${size}/apps/twinsift.png
    # Width and height from the PNG header.
    dims=$(od -An -tu1 -j16 -N8 "$root/$png" | awk '{print $3*256+$4 "x" $7*256+$8}')
    [[ "$dims" == "${size}x${size}" ]] || fail "$png is $dims"
done
"$root/usr/bin/twinsift" --version | grep -q '^twinsift [0-9]' || fail "the installed program does not run"

# The launcher must name what was installed. desktop-file-validate prints warnings but passes them;
# here they fail too.
desktop=$root/usr/share/applications/twinsift.desktop
grep -qx 'Exec=twinsift' "$desktop" || fail "Exec does not start twinsift"
grep -qx 'Icon=twinsift' "$desktop" || fail "Icon is not the installed icon"
report=$(desktop-file-validate "$desktop" 2>&1) && [[ -z "$report" ]] ||
    fail "desktop-file-validate: $report"
report=$(appstreamcli validate --no-net "$root/usr/share/metainfo/app.twinsift.Twinsift.metainfo.xml" 2>&1) ||
    fail "appstreamcli validate: $report"

warnings=$(zcat "$root/usr/share/man/man1/twinsift.1.gz" | LC_ALL=C.UTF-8 groff -man -Tutf8 -ww -z 2>&1)
[[ -z "$warnings" ]] || fail "the manual page has faults: $warnings"
manual=$(zcat "$root/usr/share/man/man1/twinsift.1.gz")
for section in SYNOPSIS OPTIONS "OUTPUT FORMATS" "EXIT STATUS" EXAMPLES; do
    grep -q "^\.SH \"*$section" <<<"$manual" || fail "the manual page has no $section section"
done

# The completion, as bash would run it for `twinsift sc<Tab>` and `twinsift scan --format <Tab>`.
completion=$root/usr/share/bash-completion/completions/twinsift
bash -n "$completion"
if [[ -f /usr/share/bash-completion/bash_completion ]]; then
    complete_words() {
        bash -c 'source /usr/share/bash-completion/bash_completion; source "$1"; shift
                 COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
                 _twinsift twinsift; printf "%s\n" "${COMPREPLY[@]}"' complete "$completion" "$@"
    }
    [[ $(complete_words twinsift sc) == scan ]] || fail "completion of the command"
    [[ $(complete_words twinsift scan --format "" | sort | tr '\n' ' ') == "csv json text " ]] ||
        fail "completion of --format"
    [[ $(complete_words twinsift scan --ac) == --action ]] || fail "completion of an option"
fi
echo "check-package: $source installs the expected files"
