# shellcheck shell=bash disable=SC2034
# Debian packages by purpose, and one function that installs what is missing. Sourced by the
# scripts of the repository's root.

build_packages=(g++ cmake ninja-build ccache pkg-config qtbase5-dev qtbase5-dev-tools
    libqt5svg5-dev libcli11-dev liberfa-dev libboost-math-dev)
# Fonts of the plots and of the help documents.
font_packages=(fonts-liberation fonts-dejavu-core)
run_packages=("${build_packages[@]}" "${font_packages[@]}")
# The end-to-end test drives the built program in an X server of its own.
test_packages=("${run_packages[@]}" libfftw3-dev xvfb openbox xdotool imagemagick)
package_packages=("${run_packages[@]}" dpkg-dev file help2man lintian)
cluster_packages=("${run_packages[@]}" slurmd slurmctld slurm-client munge parallel)
coverage_packages=("${test_packages[@]}" gcovr)
bench_packages=("${run_packages[@]}" libbenchmark-dev libfftw3-dev libqcustomplot-dev)

say() { printf '%s\n' "$*" >&2; }

# install_packages NAME...: calls apt-get only when something is missing.
install_packages() {
    local missing=() as_root=() name
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is no Debian system, so nothing is installed by itself. Needed are what"
        say "Debian 12 calls: $*"
        return 0
    fi
    for name in "$@"; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) != installed ]]; then
            missing+=("$name")
        fi
    done
    ((${#missing[@]})) || return 0

    if ((EUID != 0)); then
        # Without a terminal nobody can answer a question for the password.
        if ! command -v sudo >/dev/null || { ! [[ -t 0 ]] && ! sudo -n true 2>/dev/null; }; then
            say "These packages are missing and only the administrator can install them:"
            say "    apt-get install ${missing[*]}"
            return 1
        fi
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    # Package lists may be absent or old, so the first failure is answered by fetching them.
    local install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive
        apt-get install -y --no-install-recommends "${missing[@]}")
    if ! "${install[@]}" </dev/null >&2; then
        "${as_root[@]}" apt-get update </dev/null >&2
        if ! "${install[@]}" </dev/null >&2; then
            say "The installation failed. Needed are: ${missing[*]}"
            return 1
        fi
    fi
}
