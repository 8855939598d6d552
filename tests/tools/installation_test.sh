#!/bin/bash
# Installs into a temporary directory, moves the tree, and uses it as a new user would: the tool
# without any environment, and the library through find_package and through pkg-config.
set -euxo pipefail
source_dir=$1 build_dir=$2 libdir=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/moved

cmake --install "$build_dir" --prefix "$work/installed" >/dev/null
mv "$work/installed" "$prefix"
# Nothing may be found in the build tree any more.
find "$prefix" -type f \( -perm -u+x -o -name '*.so*' \) -exec readelf -d {} + >"$work/run-paths"
! grep -q "$build_dir" "$work/run-paths"

printf 'P6\n2 1\n255\nabcdef' >"$work/in.ppm"
env -i "$prefix/bin/vorn" convert "$work/in.ppm" "$work/a.png"
env -i "$prefix/bin/vorn" convert "$work/a.png" "$work/b.ppm"
cmp "$work/in.ppm" "$work/b.ppm"
env -i "$prefix/bin/vorn" modules | grep -q "Loaders in $prefix/$libdir/VORN"

# The settings dialog is found and loaded, and misses only a display.
if [ -e "$build_dir/VORN/Savers/png.so" ]; then
    ! env -i "$prefix/bin/vorn" settings png --dialog 2>"$work/dialog"
    grep -q '(2008, 0)$' "$work/dialog"
fi

cmake -S "$source_dir/examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/examples" --target example_load >/dev/null
expected='2 x 1, mean brightness 99 of 255'
[ "$(env -i "$work/examples/load" "$work/a.png")" = "$expected" ]

export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs vorn)"
cc -std=c11 -pedantic-errors -Wall -Wextra -Werror "$source_dir/examples/load.c" "${flags[@]}" \
    -Wl,-rpath,"$prefix/$libdir" -o "$work/load"
[ "$(env -i "$work/load" "$work/in.ppm")" = "$expected" ]
