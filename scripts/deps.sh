# Installs the Debian packages that are missing; sourced by scripts/run and
# scripts/test. Uses apt-get as root, sudo otherwise; does nothing when all
# packages are there, so it is safe to run again.

# Packages to build and start the viewer.
DEPS_BUILD="g++ cmake make pkg-config libsdl2-dev libgl-dev libx11-dev libgtest-dev libgl1-mesa-dri libpng-dev"
# Packages of ordtool render only: the offscreen software GL.
DEPS_TOOL="libosmesa6-dev"
# Packages to run the tests: a virtual X server, input and screenshots.
DEPS_TEST="xvfb xdotool imagemagick x11-utils xclip"

deps_missing() {
    local pkg missing=""
    for pkg in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
            missing="$missing $pkg"
        fi
    done
    echo "$missing"
}

deps_install() {
    local missing
    missing=$(deps_missing "$@")
    [ -z "$missing" ] && return 0
    echo "Installing Debian packages:$missing"
    local as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        if command -v sudo >/dev/null 2>&1; then
            as_root="sudo"
        else
            echo "These Debian packages are missing and there is no sudo to install them:$missing" >&2
            return 1
        fi
    fi
    $as_root apt-get update -qq &&
        DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing
}
