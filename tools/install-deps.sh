#!/usr/bin/env bash
# Installs every Debian package that building, testing and running Tivora need.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update
$SUDO apt-get install -y --no-install-recommends \
  build-essential cmake pkg-config git ca-certificates \
  qtbase5-dev qttools5-dev-tools libqt5svg5-dev qt5-qmake \
  librtaudio-dev \
  libgtest-dev libbenchmark-dev \
  clang libclang-rt-14-dev \
  pulseaudio pulseaudio-utils \
  xvfb xauth x11-apps xdotool imagemagick \
  fonts-liberation \
  python3 time \
  libzip-dev zip unzip \
  libflac-dev libmp3lame-dev libtag1-dev flac cdrdao cuetools ffmpeg \
  libebur128-dev \
  mingw-w64-x86-64-dev g++-mingw-w64-x86-64-posix \
  zlib1g-dev \
  lintian desktop-file-utils librsvg2-bin appstream \
  poppler-utils \
  scdoc groff-base
