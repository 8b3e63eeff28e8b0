#!/usr/bin/env bash
# Compares the export table of zanPX.dll with the dynamic symbols of the Linux
# libzanpx.so, both ways, so that neither build can gain or lose an export
# unnoticed. With --plain-names (32-bit), also fails on decorated names such as
# _zanAdd@12, which a host looking up "zanAdd" would not find.
#   check_exports.sh [--plain-names] OBJDUMP zanPX.dll NM libzanpx.so
set -euo pipefail
plain=0
if [ "${1:-}" = "--plain-names" ]; then plain=1; shift; fi
[ $# -eq 4 ] || { echo "usage: $0 [--plain-names] OBJDUMP DLL NM SO" >&2; exit 2; }
objdump=$1 dll=$2 nm=$3 so=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The name-pointer table: "\t[   3] zanCloneImage" lines up to the next blank line.
"$objdump" -p "$dll" | awk '
  /\[Ordinal\/Name Pointer\] Table/ { inTable = 1; next }
  inTable && /^[[:space:]]*\[ *[0-9]+\]/ { print $NF; next }
  inTable { inTable = 0 }' | LC_ALL=C sort > "$work/dll"
# Defined dynamic symbols, less the markers the ELF linker adds to every object.
"$nm" -D --defined-only "$so" | awk '
  NF == 3 && $3 !~ /^(_init|_fini|_edata|_end|__bss_start)$/ { print $3 }' | LC_ALL=C sort > "$work/so"

status=0
if [ ! -s "$work/dll" ]; then echo "FAIL: no export table found in $dll"; status=1; fi
if [ ! -s "$work/so" ]; then echo "FAIL: no dynamic symbols found in $so"; status=1; fi
only_dll=$(LC_ALL=C comm -23 "$work/dll" "$work/so")
only_so=$(LC_ALL=C comm -13 "$work/dll" "$work/so")
if [ -n "$only_dll" ]; then echo "FAIL: exported by $(basename "$dll") only:"; echo "$only_dll" | sed 's/^/  /'; status=1; fi
if [ -n "$only_so" ]; then echo "FAIL: exported by $(basename "$so") only:"; echo "$only_so" | sed 's/^/  /'; status=1; fi
stray=$(LC_ALL=C sort -u "$work/dll" "$work/so" | grep -v '^zan' || true)
if [ -n "$stray" ]; then echo "FAIL: exports outside the zan prefix:"; echo "$stray" | sed 's/^/  /'; status=1; fi
if [ "$plain" = 1 ]; then
  decorated=$(grep -E '@|^_' "$work/dll" || true)
  if [ -n "$decorated" ]; then echo "FAIL: decorated export names:"; echo "$decorated" | sed 's/^/  /'; status=1; fi
fi
[ "$status" = 0 ] && echo "exports match: $(wc -l < "$work/dll") names in $(basename "$dll") and $(basename "$so")"
exit "$status"
