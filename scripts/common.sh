# shellcheck shell=bash
# Shared by the scripts, which source it first: the project's folder as the current one, tools that
# speak English and are found, progress lines, a last line for each failure, and packages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# A login's PATH may lack the folders of the system's tools.
PATH=$PATH:/usr/local/sbin:/usr/sbin:/sbin
USER_LC_ALL=${LC_ALL-}
export PATH LC_ALL=C

say() {
    printf '== %s\n' "$*"
}

# fail WHAT-AND-WHAT-TO-DO is the one way out of a failure.
fail() {
    printf 'FAILED: %s\n' "$*" >&2
    told=1
    exit 1
}

# at_end COMMAND has the command run when the script ends, however it does; the last one first.
told=
endings=:
at_end() {
    endings="$1; $endings"
}

end() {
    local status=$? command=$BASH_COMMAND
    trap - EXIT
    set +e
    eval "$endings"
    [ "$status" -eq 0 ] || [ -n "$told" ] ||
        printf 'FAILED: %s ended with %d at: %s\n' "$0" "$status" "$command" >&2
    exit "$status"
}
trap end EXIT

# scratch_folder VARIABLE makes a folder that goes when the script ends.
scratch_folder() {
    local made
    made=$(mktemp -d) || fail "no temporary folder; free some room, or set TMPDIR to a folder with room"
    printf -v "$1" %s "$made"
    at_end "rm -rf '$made'"
}

# alone: this script runs once at a time in this checkout, which it can write.
alone() {
    mkdir -p build 2>/dev/null || true
    [ -w build ] ||
        fail "$PWD/build cannot be written; copy the checkout to a folder of your own and run $0 there"
    exec 9>"build/.${0##*/}.lock"
    flock -n 9 || fail "another $0 runs in this checkout; wait until it has ended"
}

# sources PATTERN... lists the project's files of such names, each with a zero behind it.
sources() {
    local names=(-name "$1") pattern
    shift
    for pattern in "$@"; do
        names+=(-o -name "$pattern")
    done
    find . -name build -prune -o -name '.?*' -prune -o -type f '(' "${names[@]}" ')' -print0
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo -n "$@"
    fi
}

# apt LOG ARGUMENT... runs apt-get, after whoever else is installing packages.
apt() {
    local log=$1 attempt
    shift
    for attempt in $(seq 60); do
        as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -q -y -o Acquire::Retries=1 "$@" >"$log" 2>&1 9>&- && return
        grep -q 'Could not get lock' "$log" || return 1
        [ "$attempt" -gt 1 ] || say "another program installs packages; waiting for it, 10 minutes at most"
        sleep 10
    done
    return 1
}

# install_packages NAME... installs those that the machine lacks, and asks nothing.
install_packages() {
    local missing=() name log command
    for name in "$@"; do
        dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q '^install ok installed' ||
            missing+=("$name")
    done
    [ "${#missing[@]}" -eq 0 ] && return 0
    command="apt-get install --no-install-recommends ${missing[*]}"
    command -v apt-get >/dev/null ||
        fail "no apt-get here; install what your system calls these packages, and run $0 again: ${missing[*]}"
    as_root true 2>/dev/null ||
        fail "packages are missing, and installing them needs root, or sudo without a password. Have root run this, then run $0 again: $command"
    say "installing ${missing[*]}"
    scratch_folder log
    apt "$log/update" update || say "apt-get update failed; going on with the lists that are there"
    apt "$log/install" --no-install-recommends install "${missing[@]}" || {
        tail -n 5 "$log"/* >&2
        fail "the packages could not be installed: see above, look whether this machine reaches its package mirror, and run as root: apt-get update && $command"
    }
}

# run LABEL COMMAND... shows the label, keeps the output, and shows it only when the command fails.
run() {
    local label=$1 log start=$SECONDS
    shift
    log=$(mktemp)
    printf '== %s ' "$label"
    if "$@" </dev/null >"$log" 2>&1; then
        printf '(%d s)\n' "$((SECONDS - start))"
        rm -f "$log"
        return 0
    fi
    printf 'FAILED after %d s\n' "$((SECONDS - start))"
    tail -n 60 "$log"
    rm -f "$log"
    return 1
}

# What building the library takes, what the demo shows, and what the tests use on top of it.
BUILD_PACKAGES=(g++ cmake ninja-build pkg-config libcups2-dev libfontconfig-dev libpango1.0-dev)
DEMO_PACKAGES=(fonts-dejavu-core cups-daemon cups-client hp-ppd socat)
# The peers that the benchmarks measure beside, and what these need.
BENCH_PACKAGES=(libicu-dev libiniparser-dev fonts-dejavu-core cups-daemon cups-client hp-ppd)
TEST_PACKAGES=(libgtest-dev socat clang-format clang-tidy procps python3 python3-pycparser
    cups-daemon cups-client xz-utils hp-ppd openprinting-ppds foomatic-db-compressed-ppds
    fonts-dejavu-core fonts-urw-base35 doxygen abigail-tools dpkg-dev file lintian shellcheck)
