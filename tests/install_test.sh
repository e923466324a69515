#!/usr/bin/env bash
# Installs a build into a folder of its own, looks at what is there, and takes it away again: SOURCE BUILD
set -euo pipefail
source=$1 build=$2
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
prefix=/opt/vanta
root=$stage$prefix

fail() { echo "$*" >&2; exit 1; }
install() { DESTDIR=$stage cmake --install "$build" --prefix $prefix > /dev/null; }

# What others have put there stays theirs.
mkdir -p "$root/bin"
touch "$root/bin/other"
install

metainfo=$root/share/metainfo/com.quillmark.vanta2.metainfo.xml
desktop=$root/share/applications/vanta-jack.desktop
for file in "$metainfo" "$desktop" "$root"/share/icons/hicolor/scalable/apps/vanta.svg; do
  [ -s "$file" ] || fail "$file is missing"
done
for name in vanta vanta-jack vanta-scope; do
  "$root/bin/$name" --version | grep -q "^$name [0-9.]*$" || fail "$name does not say its version"
  page=$root/share/man/man1/$name.1
  [ -s "$page" ] || fail "$page is missing"
  complaints=$(LC_ALL=C.UTF-8 man --warnings -l "$page" 2>&1 > /dev/null) || fail "$page is no manual page"
  [ -z "$complaints" ] || fail "$complaints"
done
LC_ALL=C.UTF-8 man -l "$root/share/man/man1/vanta.1" | grep -q -- --max-true-peak || fail "the manual lacks an option"
desktop-file-validate "$desktop"
appstreamcli validate --no-net "$metainfo"
grep -q "<project_license>LicenseRef-proprietary<" "$metainfo" || fail "the licence is missing"

# As they were built, where hosts look for them.
for plugin in "$build"/plugins/*; do
  [ -e "$plugin" ] || continue
  # No host of this system looks for it.
  [ "${plugin##*/}" != vanta-aax.so ] || continue
  diff -r "$plugin" "$root/lib/${plugin##*.}/${plugin##*/}"
done

# A second installation does not forget what the first has made.
install
cmake -DPREFIX=$prefix -DDESTDIR="$stage" -P "$source/cmake/installed_files.cmake"
left=$(cd "$stage" && find . -mindepth 1 | sort | tr '\n' ' ')
[ "$left" = "./opt ./opt/vanta ./opt/vanta/bin ./opt/vanta/bin/other " ] || fail "uninstall leaves: $left"
