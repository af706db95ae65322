#!/usr/bin/env bash
# Runs the program on the bundled sample picture. Until the editor's window lands, that is
# the command line's picture report.
set -euo pipefail
build=${1:-build}
sample=assets/samples/sample.bmp
echo "The editor's window is not built yet: showing what tessavo-cli reads from $sample."
"$build/src/cli/tessavo-cli" info "$sample"
