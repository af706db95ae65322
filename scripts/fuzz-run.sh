#!/usr/bin/env bash
# Runs every fuzz target for a while on its seed corpus. New inputs go to a corpus folder in
# the build; findings are written as crash-* files there, to be kept in tests/crashers.
set -euo pipefail
build=${1:-build-fuzz}
seconds=${2:-60}
testdata=$(cmake -L -N "$build" 2>/dev/null | sed -n 's/^TESSAVO_TESTDATA:PATH=//p')
testdata=${testdata:-../shared/testdata}
declare -A seeds=(
  [fuzz_bmp_loader]="$testdata/bmpsuite/g $testdata/bmpsuite/q $testdata/bmpsuite/b $testdata/bmp-extra"
  [fuzz_ini]="fuzz/seeds/ini"
  [fuzz_metafile]="$testdata/wmf-emf"
  [fuzz_gif]="$testdata/gif-testsuite $testdata/gif-peterdn $testdata/gif-giflib $testdata/gif-extra"
  [fuzz_tga]="$testdata/tga"
  [fuzz_pcx]="$testdata/pcx"
  [fuzz_ico]="$testdata/ico-cur"
  [fuzz_pe]="$testdata/pe-icl"
  [fuzz_icon_status]="$testdata/ico-cur $testdata/pe-icl/icl $testdata/pe-icl/ne"
  [fuzz_ani]="$testdata/ani"
  [fuzz_png]="$testdata/pngsuite/png $testdata/png-extra/gdk-pixbuf $testdata/png-extra/gfxprim $testdata/png-extra/image-png $testdata/png-extra/libspng $testdata/png-extra/pillow"
)
status=0
for target in "${!seeds[@]}"; do
  corpus="$build/corpus/$target"
  mkdir -p "$corpus" "$build/findings/$target"
  echo "== $target for ${seconds}s"
  # shellcheck disable=SC2086
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -rss_limit_mb=4096 -timeout=10 \
       -artifact_prefix="$build/findings/$target/" "$corpus" ${seeds[$target]} \
       "tests/crashers/$target"; then
    status=1
  fi
done
exit $status
