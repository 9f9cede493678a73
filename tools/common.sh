# shellcheck shell=bash
# What the scripts of this project share; sourced, not run.

# quietly LOG COMMAND...: runs COMMAND with its output in LOG, and shows LOG only on failure.
quietly() {
    local log=$1 status=0
    shift
    mkdir -p -- "$(dirname -- "$log")"
    "$@" </dev/null >"$log" 2>&1 || status=$?
    if ((status != 0)); then
        cat -- "$log" >&2
        echo "Failed with status $status: $*" >&2
    fi
    return "$status"
}

# The functions below work in the current directory, the project's root. The lock is for two
# scripts started at once: they would write the same build tree.

# A build tree that was copied along with the source still points at the old place.
is_of_this_place() { # PRESET
    grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$1/CMakeCache.txt"
}

is_configured() { # PRESET
    [[ -f build/$1/build.ninja ]] && is_of_this_place "$1"
}

# The presets share much of what they compile; what is kept for that stays within the build folder.
configure() { # PRESET ARGUMENT...
    local preset=$1
    shift
    if command -v ccache >/dev/null; then
        set -- -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@"
    fi
    if [[ -f build/$preset/CMakeCache.txt ]] && ! is_of_this_place "$preset"; then
        rm -rf -- "build/$preset"
    fi
    quietly "build/logs/$preset-configure.log" \
        flock build/.lock cmake --preset "$preset" "$@"
}

build() { # PRESET ARGUMENT...
    local preset=$1
    local -x CCACHE_DIR=$PWD/build/ccache
    # What ccache asks for where headers are precompiled.
    local -x CCACHE_SLOPPINESS=pch_defines,time_macros
    shift
    quietly "build/logs/$preset-build.log" \
        flock build/.lock cmake --build --preset "$preset" "$@"
}
