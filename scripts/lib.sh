# shellcheck shell=bash
# Sourced by the scripts of this folder. Standard output belongs to what a script is asked for (the
# record, the test report, the figures): everything that is said on the way goes to standard error.

set -Eeuo pipefail
# Whatever fails, and with whatever status (apt-get ends with 100), the script ends with 1.
trap 'exit 1' ERR

root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
# The layers, lowest first. The tests are no layer: they may include any of them.
# shellcheck disable=SC2034 # read by the scripts that source this
layers=(base markup record converter lint tools)

# For what is built with sanitizers. A refused realloc has to reach the program as a null pointer
# instead of ending it.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:allocator_may_return_null=1:allow_addr2line=1
export UBSAN_OPTIONS=print_stacktrace=1

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# setup GROUP...: installs what the groups need and this machine lacks.
setup() {
    "$root/scripts/setup-debian" "$@"
}

# Runs a command as root.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "run this as root, or install sudo: $*"
    fi
}

# configure PRESET [CMAKE-ARGUMENT...]: (re)configures build/PRESET.
configure() {
    (cd "$root" && cmake --preset "$@") >&2
}

# compile PRESET [TARGET]: builds in build/PRESET; says nothing when nothing has changed.
compile() {
    cmake --build "$root/build/$1" --parallel "$(nproc)" --target "${2:-all}" |
        { grep -vE '^ninja: no work to do|Re-checking globbed directories' || true; } >&2
}

# run_tests PRESET: runs the tests of build/PRESET; ctest's summary is the last that it prints.
run_tests() {
    ctest --test-dir "$root/build/$1" --output-on-failure --no-tests=error --parallel 2 --timeout 600
}

# cpp_files FOLDER...: lists the C++ files in these folders of the project, one per line, relative to it.
cpp_files() {
    (cd "$root" && find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) | LC_ALL=C sort)
}
