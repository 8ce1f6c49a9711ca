# Shared by run and check: the packages that are needed, and how they are installed and things are built.
# Sourced by bash with the repository root as the current folder.

# To build the module, the platform and the host. ca-certificates is what the host checks HTTPS servers against.
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

# What the tests, the benchmarks and the other checks need besides.
check_packages=(
    ccache
    clang
    clang-format
    libbenchmark-dev
    libgtest-dev
    openssl
    pkg-config
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

# do_step WHAT COMMAND...: says what it does and ends the script when that fails.
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

# install_packages NAME...: installs what is missing; without anything missing it asks nobody.
install_packages()
{
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null ||
        fail 1 "this is not a Debian system: packages are installed through apt only. Needed are: $*"

    local name missing=()
    for name in "$@"; do
        is_installed "$name" || missing+=("$name")
    done
    if [ "${#missing[@]}" = 0 ]; then
        say "All needed packages are installed"
        return
    fi

    say "Installing what is missing: ${missing[*]}"
    local hint="ask an administrator for: apt-get install --no-install-recommends ${missing[*]}"
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || fail "$no_rights" "no rights to install packages (not root, and no sudo); $hint"
        as_root true || fail "$no_rights" "no rights to install packages (sudo refused); $hint"
    fi
    local install=(env DEBIAN_FRONTEND=noninteractive apt-get)
    as_root "${install[@]}" update -q || fail 1 "apt-get update failed; without a network, $hint"
    as_root "${install[@]}" install -q -y --no-install-recommends "${missing[@]}" ||
        fail 1 "apt-get could not install: ${missing[*]}"
}

# build PRESET [TARGET...]: configures and builds a preset, all of it unless targets are named.
build()
{
    local preset=$1
    shift
    cmake --preset "$preset" || return
    cmake --build --preset "$preset" -j "$(nproc)" ${1:+--target "$@"}
}
