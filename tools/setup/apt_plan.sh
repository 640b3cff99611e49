# Installs what the project needs, choosing packages so that apt removes
# nothing. Sourced by ./kovani and by its test, which puts stand-ins of
# apt-get, apt-cache, dpkg-query and sudo first on PATH.
#
# apt resolves a virtual development package to one default provider, which
# can conflict with a library the machine already has: libmpv-dev needs
# "libjack-dev", apt picks JACK 1's, and that would remove an installed
# JACK 2. The provider built from the same source as the installed library
# (libjack-jackd2-dev) fits beside it, so it is named explicitly.

apt_plan_simulate() {
    apt-get -s install --no-install-recommends "$@" 2>&1
}

# The packages that a simulated install (on stdin) would remove ($1 = Remv)
# or install ($1 = Inst).
apt_plan_field() {
    awk -v kind="$1" '$1 == kind { print $2 }'
}

# "package source" for each package named, one apt-cache call for all; a
# package without a Source field is its own source.
apt_plan_sources() {
    [ $# -gt 0 ] || return 0
    apt-cache show --no-all-versions "$@" 2>/dev/null | awk -F': ' '
        $1 == "Package" { if (p != "") print p, (s != "" ? s : p); p = $2; s = "" }
        $1 == "Source" { s = $2; sub(/ .*/, "", s) }
        END { if (p != "") print p, (s != "" ? s : p) }'
}

# The real packages that provide any of the packages named, one call for all.
apt_plan_providers() {
    [ $# -gt 0 ] || return 0
    apt-cache showpkg "$@" 2>/dev/null | awk '
        /^Package:/ { on = 0; next }
        /^Reverse Provides:/ { on = 1; next }
        on && NF >= 1 { print $1 }' | sort -u
}

# apt_plan PACKAGE...
# Prints the packages to install, one per line: the ones asked for, plus the
# providers chosen so that nothing installed is removed. Returns 1, having
# said on stderr which package is in the way and what to do, when no choice
# removes nothing.
apt_plan() {
    local sim removed
    sim=$(apt_plan_simulate "$@")
    removed=$(apt_plan_field Remv <<<"$sim")
    if [ -z "$removed" ]; then
        printf '%s\n' "$@"
        return 0
    fi
    # A provider built from the same source as a package that would go
    # matches what the machine has.
    local sources candidates=() p src
    # shellcheck disable=SC2086
    sources=" $(apt_plan_sources $removed | awk '{ print $2 }' | tr '\n' ' ') "
    # shellcheck disable=SC2046
    while read -r p src; do
        [[ "$sources" == *" $src "* ]] && candidates+=("$p")
    done < <(apt_plan_sources $(apt_plan_providers $(apt_plan_field Inst <<<"$sim")))
    # All matching providers together first, then each alone.
    local tries=() t
    [ ${#candidates[@]} -gt 0 ] && tries+=("${candidates[*]}")
    [ ${#candidates[@]} -gt 1 ] && tries+=("${candidates[@]}")
    for t in "${tries[@]}"; do
        # shellcheck disable=SC2086
        if [ -z "$(apt_plan_simulate "$@" $t | apt_plan_field Remv)" ]; then
            printf '%s\n' "$@" $t
            return 0
        fi
    done
    # Which of ours pulls the removal in, to say what to install by hand.
    local culprits=()
    for p in "$@"; do
        [ -n "$(apt_plan_simulate "$p" | apt_plan_field Remv)" ] && culprits+=("$p")
    done
    [ ${#culprits[@]} -gt 0 ] || culprits=("$@")
    {
        echo "kovani: installing $* would remove installed packages, and no choice of packages avoids it:"
        grep '^Remv' <<<"$sim"
        echo "kovani: in the way: $(echo $removed)"
        echo "kovani: install ${culprits[*]} by hand, choosing what may replace $(echo $removed)"
        echo "kovani: (apt-get install --no-install-recommends ${culprits[*]} shows what apt would do), then run this command again."
    } >&2
    return 1
}

# Installs the Debian packages among "$@" that are not installed yet. Arm64
# ones (the device build) first get their architecture added to dpkg. Never
# lets apt remove anything: where a default choice of apt's would, the
# matching provider is installed instead (apt_plan), and where none fits it
# stops and says what is in the way.
need_packages() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    if [[ " ${missing[*]}" == *:arm64* ]] && ! dpkg --print-foreign-architectures | grep -qx arm64; then
        echo "kovani: adding the arm64 architecture to dpkg"
        $sudo dpkg --add-architecture arm64
    fi
    $sudo apt-get update -qq
    local plan
    plan=$(apt_plan "${missing[@]}") || return 1
    mapfile -t missing <<<"$plan"
    echo "kovani: installing ${missing[*]}"
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
