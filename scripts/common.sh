# Shared by run and check: the needed packages, and functions that install them and build. Sourced by bash with the
# repository's root as the current folder.

# For the build of the module, the platform and the host. The host checks HTTPS servers against ca-certificates.
build_packages=(
    ca-certificates
    cmake
    g++
    libcli11-dev
    libcurl4-openssl-dev
    libedit-dev
    libspdlog-dev
    ninja-build
    rapidjson-dev
)

# Also needed by the tests, the benchmarks and the other checks.
check_packages=(
    ccache
    clang
    clang-format
    libbenchmark-dev
    libgtest-dev
    openssl
    pkg-config
    valgrind
)

tidy_packages=(
    clang-tidy
)

no_rights=3

say()
{
    printf '\n== %s\n' "$*"
}

# fail CODE MESSAGE...
fail()
{
    local code=$1
    shift
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit "$code"
}

# do_step WHAT COMMAND...: prints WHAT and runs the command. Ends the script when the command fails.
do_step()
{
    local what=$1 code=0
    shift
    say "$what"
    "$@" || code=$?
    [ "$code" = 0 ] || fail 1 "failed: $what (exit code $code)"
}

is_installed()
{
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

as_root()
{
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif [ -t 0 ]; then
        sudo "$@"
    else
        sudo -n "$@"
    fi
}

# install_packages NAME...: installs the missing ones. Asks for no rights and uses no network when none is missing.
install_packages()
{
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        fail 1 "this is not a Debian system: dpkg-query and apt-get are missing. Install these packages by hand: $*"

    local name missing=()
    for name in "$@"; do
        is_installed "$name" || missing+=("$name")
    done
    if [ "${#missing[@]}" = 0 ]; then
        say "All needed packages are installed"
        return
    fi

    say "Installing the missing packages: ${missing[*]}"
    local hint="let an administrator run: apt-get install --no-install-recommends ${missing[*]}"
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || fail "$no_rights" "no rights to install packages (not root, and no sudo); $hint"
        as_root true || fail "$no_rights" "no rights to install packages (sudo refused); $hint"
    fi
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get)
    as_root "${install[@]}" update -q || fail 1 "apt-get update failed; if there is no network, $hint"
    as_root "${install[@]}" install -q -y --no-install-recommends "${missing[@]}" ||
        fail 1 "apt-get could not install: ${missing[*]}"
}

# build PRESET [TARGET...]: configures a preset and builds these targets of it, or all.
build()
{
    local preset=$1
    shift
    cmake --preset "$preset" || return
    cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"}
}
