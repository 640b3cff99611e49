#!/usr/bin/env bash
# The set-up's choice of packages (need_packages, apt_plan in
# tools/setup/apt_plan.sh) on apt's recorded answers: stand-ins of apt-get,
# apt-cache, dpkg-query and sudo first on PATH replay what a Debian 12
# machine printed (tests/tools/apt/), with and without JACK 2 installed.
# Nothing is installed.
set -uo pipefail
HERE=$(cd "$(dirname "$0")" && pwd)
RECORDED=$HERE/apt
# shellcheck source=../../tools/setup/apt_plan.sh
source "$HERE/../../tools/setup/apt_plan.sh"
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
FAILED=0
ASKED=(libmpv-dev fonts-wqy-microhei python3-pil)

# The stand-ins. Each logs its call to $WORK/calls. apt-get -s answers with
# the recording that the first matching line of $WORK/sims names ("GLOB
# FILE", the glob matched against " PACKAGE... "); apt-cache answers from
# the recorded package database for the packages asked only; dpkg-query says
# installed for the packages in $WORK/installed.
mkdir -p "$WORK/bin"
cat >"$WORK/bin/apt-get" <<EOF
#!/usr/bin/env bash
echo "apt-get \$*" >>"$WORK/calls"
[ "\$1" = -s ] || exit 0
shift 3  # -s install --no-install-recommends
while read -r glob file; do
    [[ " \$* " == \$glob ]] && exec cat "$RECORDED/\$file"
done <"$WORK/sims"
echo "E: no recording for \$*" >&2
exit 100
EOF
cat >"$WORK/bin/apt-cache" <<EOF
#!/usr/bin/env bash
echo "apt-cache \$*" >>"$WORK/calls"
case \$1 in
    show) shift 2  # show --no-all-versions
        awk -v want=" \$* " 'BEGIN { RS = ""; ORS = "\n\n" }
            { p = \$2 } index(want, " " p " ")' "$RECORDED/show.txt" ;;
    showpkg) shift
        awk -v want=" \$* " '/^Package: / { on = index(want, " " \$2 " ") > 0 } on' "$RECORDED/showpkg.txt" ;;
esac
EOF
cat >"$WORK/bin/dpkg-query" <<EOF
#!/usr/bin/env bash
grep -qx -- "\${!#}" "$WORK/installed" && printf 'install ok installed' || exit 1
EOF
printf '#!/bin/sh\nexec "$@"\n' >"$WORK/bin/sudo"
chmod +x "$WORK/bin/"*
PATH=$WORK/bin:$PATH

fail() {
    echo "FAIL [$1]: $2"
    FAILED=1
}

# NAME | installed packages | sims lines (";"-separated) | expected install
# line ("-" for none) | return code | words the refusal must hold
CASES=(
    "nothing in the way (no JACK)|libsdl2-dev|* sim-nojack.txt|${ASKED[*]}|0|"
    "JACK 2 installed: its own development package|libjack-jackd2-0|*libjack-jackd2-dev* sim-jack2-with-dev.txt;* sim-jack2.txt|${ASKED[*]} libjack-jackd2-dev|0|"
    "nothing avoids the removal|libjack-jackd2-0|*libmpv-dev* sim-jack2.txt;* sim-nojack.txt|-|1|in the way: libjack-jackd2-0;install libmpv-dev by hand"
    "everything installed: apt is not asked|${ASKED[*]}|* sim-nojack.txt|-|0|"
)

for row in "${CASES[@]}"; do
    IFS='|' read -r name installed sims expected rc words <<<"$row"
    tr ' ' '\n' <<<"$installed" >"$WORK/installed"
    tr ';' '\n' <<<"$sims" >"$WORK/sims"
    : >"$WORK/calls"
    need_packages "${ASKED[@]}" >"$WORK/out" 2>"$WORK/err"
    got=$?
    [ "$got" -eq "$rc" ] || fail "$name" "returned $got, not $rc: $(cat "$WORK/err")"
    install=$(grep '^apt-get install ' "$WORK/calls" | sed 's/^apt-get install -y -qq --no-install-recommends //')
    [ "${install:--}" = "$expected" ] || fail "$name" "installed '${install:--}', not '$expected'"
    [ "$expected" = - ] && [ "$rc" -eq 0 ] && [ -s "$WORK/calls" ] &&
        fail "$name" "asked apt with nothing missing: $(head -n1 "$WORK/calls")"
    IFS=';' read -ra needed <<<"$words"
    for w in "${needed[@]}"; do
        grep -qF -- "$w" "$WORK/err" || fail "$name" "the refusal lacks '$w': $(cat "$WORK/err")"
    done
done

[ "$FAILED" -eq 0 ] && echo "PASS: the set-up's choice of packages"
exit "$FAILED"
