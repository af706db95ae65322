#!/usr/bin/env bash
# Installs every Debian package that the build, the tests, the benchmarks and the
# fuzz targets need. Packages already installed are skipped, so a second run is quick.
set -euo pipefail

packages=(
  # build
  build-essential cmake ninja-build ccache pkg-config
  clang libclang-rt-14-dev
  # Qt and the platform stand-ins
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-image-formats-plugins qt6-multimedia-dev
  libqt6svg6 libqt6opengl6-dev
  zlib1g-dev libwmf-dev libemf2svg-dev
  libswscale-dev libavformat-dev libavcodec-dev
  fonts-liberation2 fonts-dejavu-core
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth x11-apps x11-utils
  libgif-dev libpng-dev libspng-dev libdeflate-dev libjpeg62-turbo-dev
  libmagick++-6.q16-dev
  pngcheck icoutils imagemagick libimage-exiftool-perl
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all packages present"
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  SUDO=()
else
  SUDO=(sudo)
fi

echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${SUDO[@]}" apt-get update -qq
"${SUDO[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
