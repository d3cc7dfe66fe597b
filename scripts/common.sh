# Shared by the scripts: progress lines, and packages that are installed when missing.
# Sourced, with the project's folder as the current one.

say() {
    printf '== %s\n' "$*"
}

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo -n "$@" || fail "this needs root or sudo without a password: $*"
    fi
}

# install_packages NAME... installs those that the machine lacks, and asks nothing.
install_packages() {
    local missing=() name
    for name in "$@"; do
        dpkg-query -W -f '${Status}' "$name" 2>/dev/null | grep -q '^install ok installed' ||
            missing+=("$name")
    done
    [ "${#missing[@]}" -eq 0 ] && return 0
    say "installing ${missing[*]}"
    command -v apt-get >/dev/null || fail "no apt-get here; install these yourself: ${missing[*]}"
    local log
    log=$(mktemp)
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q update >"$log" 2>&1 || true
    if ! as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y --no-install-recommends install "${missing[@]}" >>"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "apt-get could not install the packages"
    fi
    rm -f "$log"
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
BUILD_PACKAGES=(g++ cmake ninja-build pkg-config
    libcups2-dev libfontconfig-dev libpango1.0-dev libglib2.0-dev)
DEMO_PACKAGES=(fonts-dejavu-core cups-daemon cups-client hp-ppd socat)
TEST_PACKAGES=(libgtest-dev libbenchmark-dev clang-format clang-tidy procps python3
    cups-daemon cups-client xz-utils hp-ppd openprinting-ppds foomatic-db-compressed-ppds
    fonts-dejavu-core fonts-urw-base35 doxygen abigail-tools dpkg-dev file)
