#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing; says nothing when none is.
# Usage: scripts/install_deps.sh PACKAGE...
# Everything goes to standard error: the caller's standard output may be a protocol.
set -euo pipefail
exec >&2 </dev/null

is_installed() {
    [[ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

if ! command -v dpkg-query >/dev/null; then
    echo "install_deps: this is no Debian system. Make sure that these are installed: $*"
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
        echo "install_deps: neither root nor sudo here. As root: apt-get install ${missing[*]}"
        exit 1
    fi
    as_root=(sudo "${as_root[@]}")
fi

echo "Installing ${missing[*]} ..."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# A failed update alone is no reason to stop: the lists at hand may do.
"${as_root[@]}" apt-get -qq update >"$log" 2>&1 || true
if ! "${as_root[@]}" apt-get -qq -o DPkg::Lock::Timeout=120 \
    install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
    cat "$log"
    echo "install_deps: could not install ${missing[*]}; apt-get's own words are above."
    exit 1
fi
