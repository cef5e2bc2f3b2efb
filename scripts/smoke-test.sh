#!/usr/bin/env bash
# Starts the built program under Xvfb on a private session bus for a few seconds and checks that its
# window appears and that it is still running. Usage: scripts/smoke-test.sh path/to/twinsift [shot.png]
set -euo pipefail
binary=$(readlink -f "$1")
shot=${2:-}
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT

inner=$(cat <<'INNER'
set -euo pipefail
binary=$1; shot=$2
"$binary" & pid=$!
window=$(timeout 15 xdotool search --sync --onlyvisible --name '^Twinsift$' | head -1) || true
sleep 1
if ! kill -0 "$pid" 2>/dev/null; then echo "smoke test: twinsift exited early" >&2; exit 1; fi
if [[ -z "$window" ]]; then echo "smoke test: no Twinsift window appeared" >&2; kill "$pid"; exit 1; fi
[[ -n "$shot" ]] && import -window root "$shot"
kill "$pid"; wait "$pid" 2>/dev/null || true
echo "smoke test: window shown, program alive"
INNER
)
HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_DATA_HOME="$home/.local/share" XDG_CURRENT_DESKTOP=GNOME \
    xvfb-run -a -s "-screen 0 1280x800x24" dbus-run-session -- bash -c "$inner" smoke "$binary" "$shot"
