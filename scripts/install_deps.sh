#!/usr/bin/env bash
# Installs whichever of the named Debian packages are missing; prints nothing if none is.
# Usage: scripts/install_deps.sh PACKAGE...
# All output goes to standard error, because the caller's standard output may be a protocol.
set -euo pipefail
exec >&2 </dev/null

is_installed() {
    [[ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

if ! command -v dpkg-query >/dev/null; then
    echo "install_deps: this is not a Debian system. Make sure that these are installed: $*"
    exit 0
fi

missing=()
for package in "$@"; do
    is_installed "$package" || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
    exit 0
fi

as_root=(env DEBIAN_FRONTEND=noninteractive)
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "install_deps: missing packages: ${missing[*]}"
        echo "install_deps: not root, and no sudo. Run as root: apt-get install ${missing[*]}"
        exit 1
    fi
    as_root=(sudo "${as_root[@]}")
fi

echo "Installing ${missing[*]} ..."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# A failed update alone is no reason to stop: the current lists may be good enough.
"${as_root[@]}" apt-get -qq update >"$log" 2>&1 || true
if ! "${as_root[@]}" apt-get -qq -o DPkg::Lock::Timeout=120 \
    install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
    cat "$log"
    echo "install_deps: could not install ${missing[*]}; see apt-get's output above."
    exit 1
fi
