# shellcheck shell=bash
# Installs what the jobs need. Sourced by ./dev.

# Compilers and build.
DebianPackages="g++ cmake ninja-build ccache clang clang-format clang-tidy libclang-rt-14-dev googletest git ca-certificates
g++-mingw-w64-x86-64-posix wine wine64
libx11-dev libxi-dev libxtst-dev libxrandr-dev libssl-dev librsvg2-bin icoutils imagemagick patchelf
libwebkitgtk-6.0-4 libgtk-4-1 libvulkan1 fonts-dejavu-core fonts-inter-variable fonttools
xvfb xserver-xephyr openbox xfwm4 wmctrl xdotool x11-utils x11-xserver-utils x11-apps chromium shellcheck procps dbus-daemon zenity
locales"

# Installed by the bench only, to compare our playback with.
# shellcheck disable=SC2034
BenchPackages="xmacro"

AsRoot() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

InstallDebianPackages() {
    local missing=() package
    for package in "$@"; do
        if ! dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
            missing+=("$package")
        fi
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "These packages are missing and this is no Debian system: ${missing[*]}" >&2
        return 1
    fi
    echo "Installing: ${missing[*]}"
    mkdir -p build
    if ! (AsRoot apt-get update -qq &&
        AsRoot env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}") \
        >build/setup.log 2>&1; then
        tail -n 20 build/setup.log >&2
        return 1
    fi
}

Setup() {
    local packages=()
    read -r -d '' -a packages <<<"$DebianPackages" || true
    # An installed Node.js may come from another source, which cannot be mixed with Debian's npm.
    command -v node >/dev/null || packages+=(nodejs)
    command -v npm >/dev/null || packages+=(npm)
    InstallDebianPackages "${packages[@]}"
    if [ ! -f node_modules/.varnelle-lock ] || ! cmp -s package-lock.json node_modules/.varnelle-lock; then
        mkdir -p build
        if ! npm ci --no-fund --no-audit >build/npm.log 2>&1; then
            tail -n 20 build/npm.log >&2
            return 1
        fi
        cp package-lock.json node_modules/.varnelle-lock
    fi
}
