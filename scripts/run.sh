#!/usr/bin/env bash
# Starts the editor on the bundled sample picture. On a machine without a display it runs under
# a virtual X server, waits for the frame to appear, saves a screenshot to
# <build>/run-screenshot.png and closes the program again.
set -euo pipefail
build=${1:-build}
program="$build/tessavo"
sample="$(pwd)/assets/samples/sample.bmp"

if [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
  exec "$program" "$sample"
fi

screenshot="$build/run-screenshot.png"
rm -f "$screenshot"
echo "No display: starting Tessavo on a virtual screen to take $screenshot"
xvfb-run -a -s "-screen 0 1600x1000x24" bash -c '
  program=$1; sample=$2; screenshot=$3
  "$program" "$sample" &
  pid=$!
  for _ in $(seq 1 150); do
    if xwininfo -root -tree 2>/dev/null | grep -q "Tessavo, Icon Editor"; then break; fi
    if ! kill -0 "$pid" 2>/dev/null; then echo "Tessavo ended before its window appeared" >&2; exit 1; fi
    sleep 0.2
  done
  # Past the splash and the first paint.
  sleep 4
  import -window root "$screenshot"
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
' run "$program" "$sample" "$screenshot"
if [[ -f "$screenshot" ]]; then
  echo "Screenshot saved: $screenshot"
else
  echo "No screenshot was taken" >&2
  exit 1
fi
