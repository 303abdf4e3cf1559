#!/usr/bin/env bash
# Compiles, for a Windows target, every source file that has a branch for
# Windows or for POSIX only (Q_OS_WIN, _WIN32, Q_OS_UNIX, windows.h): clang
# with --target=x86_64-w64-mingw32 and -fsyntax-only, against the mingw-w64
# headers from Debian and this machine's Qt headers. It proves that the
# Windows code parses and type-checks against the Win32 and Qt declarations;
# it builds, links and runs nothing, so it proves nothing about behaviour.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build} # for headers CMake generates

GCC_CXX=$(ls -d /usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++ 2>/dev/null | head -n1)
QT=$(qmake -query QT_INSTALL_HEADERS 2>/dev/null || echo /usr/include/x86_64-linux-gnu/qt5)
if [ -z "$GCC_CXX" ] || [ ! -d /usr/x86_64-w64-mingw32/include ]; then
    echo "check-windows: the mingw-w64 headers are missing (tools/install-deps.sh)" >&2
    exit 1
fi
flags=(--target=x86_64-w64-mingw32 -fsyntax-only -std=c++17 -Wall -Wextra -Werror
       -Wno-ignored-attributes -DUNICODE -D_UNICODE
       -DQT_NO_FOREACH -DQT_NO_CAST_TO_ASCII -DQT_NO_NARROWING_CONVERSIONS_IN_CONNECT
       -I. -I"$BUILD"
       -isystem "$GCC_CXX" -isystem "$GCC_CXX/x86_64-w64-mingw32"
       -isystem /usr/x86_64-w64-mingw32/include)
for module in "" QtCore QtGui QtWidgets QtDBus QtSvg; do
    flags+=(-isystem "$QT/$module")
done

# The target must really take the Windows branches, or the check is empty.
probe=$(mktemp --suffix=.cpp)
trap 'rm -f "$probe"' EXIT
printf '#include <QtGlobal>\n#ifndef Q_OS_WIN\n#error no Windows branch\n#endif\n' >"$probe"
clang++ "${flags[@]}" "$probe"

mapfile -t files < <(grep -rlE 'Q_OS_WIN|_WIN32|Q_OS_UNIX|windows\.h' \
    --include='*.cpp' app ddp audio export widgets archive verify analysis report jobs tools | sort)
failed=0
for file in "${files[@]}"; do
    if ! clang++ "${flags[@]}" "$file"; then
        echo "check-windows: $file does not compile for Windows" >&2
        failed=1
    fi
done
[ "$failed" = 0 ] || exit 1
echo "check-windows: ${#files[@]} files with Windows branches compile for x86_64-w64-mingw32."
