#!/usr/bin/env bash
# Remakes the encrypted test files tests/data/enc-*.pdf from enc-source.in with qpdf, an
# independent writer. Each run gives new IDs, IVs and salts, so the files are committed and the
# tests read them as they are; rerun only to add a combination.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
data=$(cd "$here/.." && pwd)
src=$(mktemp --suffix=.pdf)
trap 'rm -f "$src"' EXIT
python3 "$here/../../../tools/mkpdf.py" "$here/enc-source.in" "$src"
cp "$src" "$data/enc-source.pdf"
C=--compress-streams=n
q() { qpdf "$@"; }
cd "$data"
q $C --allow-weak-crypto --encrypt user owner 40 -- "$src" enc-r2-rc4-40.pdf
q $C --allow-weak-crypto --encrypt user owner 128 --use-aes=n -- "$src" enc-r3-rc4-128.pdf
q $C --allow-weak-crypto --encrypt user owner 128 --use-aes=n --force-V4 -- "$src" enc-r4-rc4-v4.pdf
q $C --encrypt user owner 128 --use-aes=y -- "$src" enc-r4-aes128.pdf
q $C --encrypt user owner 128 --use-aes=y --cleartext-metadata -- "$src" enc-r4-aes128-clearmeta.pdf
q --object-streams=generate --encrypt user owner 128 --use-aes=y -- "$src" enc-r4-aes128-objstm.pdf
q $C --encrypt "" owner 128 --use-aes=y -- "$src" enc-r4-aes128-owneronly.pdf
q $C --encrypt hôtel âge 128 --use-aes=y -- "$src" enc-r4-aes128-latin1.pdf
q $C --encrypt user owner 256 --force-R5 -- "$src" enc-r5-aes256.pdf
q $C --encrypt user owner 256 -- "$src" enc-r6-aes256.pdf
q $C --encrypt user owner 256 --cleartext-metadata -- "$src" enc-r6-aes256-clearmeta.pdf
q --object-streams=generate --encrypt user owner 256 -- "$src" enc-r6-aes256-objstm.pdf
q $C --encrypt "" owner 256 -- "$src" enc-r6-aes256-owneronly.pdf
q $C --encrypt hôtel âge 256 -- "$src" enc-r6-aes256-utf8.pdf
# Passwords past the lengths the revisions read: 32 bytes at revision 4, 127 at revision 6.
long32=abcdefghijklmnopqrstuvwxyz012345
long127=$(printf 'p%.0s' $(seq 1 123))wxyz
q $C --encrypt "$long32" owner 128 --use-aes=y -- "$src" enc-r4-aes128-long.pdf
q $C --encrypt "$long127" owner 256 -- "$src" enc-r6-aes256-long.pdf
