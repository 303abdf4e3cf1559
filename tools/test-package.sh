#!/usr/bin/env bash
# The Debian package as a user gets it: built with cpack from a finished build
# folder, checked by lintian (no error), desktop-file-validate and appstreamcli,
# installed with apt-get, its tivora-ddp run on the demo disc from /usr/bin and
# its window started under Xvfb, then removed again. Whatever happens, the
# package and the packages its apt-get install brought in are removed at the
# end: the machine keeps the packages it had, and nothing else installed
# meanwhile (by another shell) is touched.
#   tools/test-package.sh [BUILD_DIR]        (default: build)
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
BUILD=$(cd "${1:-build}" && pwd)
DEMO=$BUILD/demo-disc
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
APT=($SUDO apt-get -o DPkg::Lock::Timeout=300 -q)
START=$SECONDS

say() { echo "test-package: $*"; }
fail() {
    echo "test-package: FAILED: $*" >&2
    exit 1
}
# The packages an apt-get install log names as NEW, one a line.
new_packages() {
    sed -n '/^The following NEW packages will be installed:/,/^[^ ]/{/^  /p}' "$1" | tr ' ' '\n' | grep -v '^$' || true
}
is_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' tivora 2>/dev/null || true)" = installed ]
}

# A tivora installed by someone else is theirs: the test neither replaces
# nor removes it.
if is_installed; then
    fail "a tivora package is already installed on this machine; remove it first (apt-get remove tivora)"
fi

WORK=$(mktemp -d /tmp/tivora-package.XXXXXX)
touch "$WORK/install.log"
source "$ROOT/tools/test-env.sh"

cleanup() {
    local rc=$?
    trap - EXIT INT TERM
    if is_installed; then
        "${APT[@]}" remove -y tivora >"$WORK/cleanup.log" 2>&1 || rc=1
    fi
    # Dependencies our apt-get install brought in for the package go as well.
    local pulled
    pulled=$(new_packages "$WORK/install.log" | grep -vx 'tivora' | tr '\n' ' ' || true)
    if [ -n "$pulled" ]; then
        "${APT[@]}" purge -y $pulled >>"$WORK/cleanup.log" 2>&1 || rc=1
    fi
    stop_test_env
    rm -rf "$WORK"
    exit $rc
}
trap cleanup EXIT
trap 'exit 1' INT TERM

# 1. Build it.
[ -f "$BUILD/CPackConfig.cmake" ] || fail "$BUILD has no CPackConfig.cmake (configure it first)"
[ -f "$DEMO/DDPID" ] || fail "no demo disc in $DEMO (build the demo-disc target first)"
VERSION=$(sed -n 's/^set(CPACK_PACKAGE_VERSION "\(.*\)")$/\1/p' "$BUILD/CPackConfig.cmake")
ARCH=$(dpkg --print-architecture)
DEB=$WORK/tivora_${VERSION}_${ARCH}.deb
(cd "$BUILD" && cpack -G DEB -B "$WORK" >"$WORK/cpack.log" 2>&1) || {
    cat "$WORK/cpack.log" >&2
    fail "cpack -G DEB"
}
[ -f "$DEB" ] || fail "cpack wrote no $(basename "$DEB"): $(ls "$WORK")"
say "built $(basename "$DEB"), $(du -k "$DEB" | cut -f1) KiB, in $((SECONDS - START)) s"

# 2. What the control file says: Depends must come from the binaries.
field() { dpkg-deb -f "$DEB" "$1"; }
[ "$(field Package)" = tivora ] || fail "Package is '$(field Package)'"
[ "$(field Version)" = "$VERSION" ] || fail "Version is '$(field Version)', not $VERSION"
[ "$(field Section)" = sound ] || fail "Section is '$(field Section)'"
DEPENDS=$(field Depends)
for lib in libc6 libqt5widgets5 librtaudio; do
    [[ $DEPENDS == *"$lib"* ]] || fail "Depends does not name $lib (dpkg-shlibdeps not run?): $DEPENDS"
done

# 3. What it holds.
dpkg-deb -x "$DEB" "$WORK/root"
R=$WORK/root/usr
expect=(bin/tivora bin/tivora-ddp bin/tivora-ddp-play
    share/applications/tivora.desktop share/metainfo/com.korvane.tivora.metainfo.xml
    share/icons/hicolor/scalable/apps/tivora.svg
    share/doc/tivora/copyright share/doc/tivora/changelog.gz
    share/man/man1/tivora.1.gz share/man/man1/tivora-ddp.1.gz
    share/bash-completion/completions/tivora-ddp)
SIZES=(16 24 32 48 64 128 256 512)
for size in "${SIZES[@]}"; do expect+=("share/icons/hicolor/${size}x${size}/apps/tivora.png"); done
for path in "${expect[@]}"; do
    [ -f "$R/$path" ] || fail "the package has no /usr/$path"
done
# Each icon is a PNG of exactly the size its folder names.
for size in "${SIZES[@]}"; do
    png=$R/share/icons/hicolor/${size}x${size}/apps/tivora.png
    got=$(python3 -c 'import struct,sys
d=open(sys.argv[1],"rb").read(24)
assert d[:8]==b"\x89PNG\r\n\x1a\n", "not a PNG"
print("%dx%d" % struct.unpack(">II", d[16:24]))' "$png") || fail "$png is not a PNG"
    [ "$got" = "${size}x${size}" ] || fail "the ${size}x${size} icon is $got"
done
# The newest entry of the changelog and of the metainfo is this version.
cl_version=$(zcat "$R/share/doc/tivora/changelog.gz" | sed -n '1s/^tivora (\([^)]*\)).*/\1/p')
[ "$cl_version" = "$VERSION" ] || fail "the changelog's newest entry is '$cl_version', not $VERSION"
mi_version=$(grep -m1 -o '<release version="[^"]*"' "$R/share/metainfo/com.korvane.tivora.metainfo.xml" | cut -d'"' -f2)
[ "$mi_version" = "$VERSION" ] || fail "the metainfo's newest release is '$mi_version', not $VERSION"
# Software centres show the screenshots from the repository: each must be there.
shots=$(grep -o '<image>[^<]*</image>' "$R/share/metainfo/com.korvane.tivora.metainfo.xml" | sed 's#<image>\(.*\)</image>#\1#')
[ -n "$shots" ] || fail "the metainfo has no screenshot"
for url in $shots; do
    rel=${url#https://raw.githubusercontent.com/korvane/tivora/main/}
    [ "$rel" != "$url" ] && [ -f "$ROOT/$rel" ] || fail "the screenshot $url is no file of the repository"
done

# 4. The validators and lintian.
desktop-file-validate "$R/share/applications/tivora.desktop" || fail "desktop-file-validate"
# validate-tree also checks that the metainfo's launchable is the package's
# desktop entry.
appstreamcli validate-tree --pedantic --no-net "$WORK/root" || fail "appstreamcli validate-tree --pedantic"
# lintian says so when run as root; that is no finding about the package.
lintian --no-tag-display-limit "$DEB" 2>&1 | grep -v 'running with root privileges' >"$WORK/lintian.log" || true
if grep -q '^E:' "$WORK/lintian.log"; then
    cat "$WORK/lintian.log" >&2
    fail "lintian reports errors"
fi
say "lintian: no error; $(grep -c '^W:' "$WORK/lintian.log" || true) warnings"
sed -n 's/^W: /test-package:   W: /p' "$WORK/lintian.log"

# 5. Install it as a user would.
(cd "$WORK" && "${APT[@]}" install -y --no-install-recommends "./$(basename "$DEB")") >"$WORK/install.log" 2>&1 || {
    cat "$WORK/install.log" >&2
    fail "apt-get install ./$(basename "$DEB")"
}
is_installed || fail "apt-get install ran, but tivora is not installed"
dpkg -L tivora >"$WORK/files"

# 6. The installed programs work, from /usr/bin, with a home of their own.
export HOME=$WORK/home XDG_CACHE_HOME=$WORK/home/.cache XDG_CONFIG_HOME=$WORK/home/.config \
    XDG_DATA_HOME=$WORK/home/.local/share
mkdir -p "$HOME"
/usr/bin/tivora-ddp info "$DEMO" >"$WORK/info.txt" || fail "/usr/bin/tivora-ddp info exited $?"
"$BUILD/tools/tivora-ddp/tivora-ddp" info "$DEMO" >"$WORK/info-build.txt"
cmp -s "$WORK/info.txt" "$WORK/info-build.txt" || {
    diff "$WORK/info-build.txt" "$WORK/info.txt" >&2 || true
    fail "the installed tivora-ddp info differs from the build's"
}
start_pulse
start_xvfb
TIVORA_QUIT_AFTER_LOAD=1 timeout 60 /usr/bin/tivora "$DEMO" >"$WORK/window.log" 2>&1 ||
    fail "/usr/bin/tivora exited $?: $(cat "$WORK/window.log")"
grep -q '^loaded-and-shown ' "$WORK/window.log" ||
    fail "/usr/bin/tivora never showed the demo disc: $(cat "$WORK/window.log")"
stop_test_env
say "installed tivora-ddp and tivora ran on the demo disc"

# 7. Remove it: none of its files stays, and the package list is as it was.
"${APT[@]}" remove -y tivora >"$WORK/remove.log" 2>&1 || {
    cat "$WORK/remove.log" >&2
    fail "apt-get remove tivora"
}
is_installed && fail "tivora is still installed after apt-get remove"
while IFS= read -r path; do
    if [ -d "$path" ] && [ ! -L "$path" ]; then
        # A folder may stay when another package owns it or it holds other files.
        if [ -z "$(ls -A "$path")" ] && ! dpkg-query -S "$path" >/dev/null 2>&1; then
            fail "the empty folder $path stayed behind"
        fi
    elif [ -e "$path" ] || [ -L "$path" ]; then
        fail "$path stayed behind after apt-get remove"
    fi
done <"$WORK/files"
pulled=$(new_packages "$WORK/install.log" | grep -vx 'tivora' | tr '\n' ' ' || true)
[ -z "$pulled" ] || say "the install brought in $pulled(purged at the end)"
say "passed in $((SECONDS - START)) s"
