# Shared by run, test and bench: sourced with the project's folder as the current one.

export WINEPREFIX="$PWD/build/wine" WINEARCH=win32 WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="

say() { printf '== %s\n' "$*"; }

# build PRESET: configures once and builds, quietly when there is little to do.
build() {
    local preset=$1 log="build/$1.log"
    mkdir -p build
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring ($preset)"
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log"; return 1; }
    fi
    say "Building ($preset)"
    # Ninja's own progress line on a terminal; elsewhere every tenth of its steps.
    if [ -t 1 ]; then
        cmake --build --preset "$preset"
    else
        cmake --build --preset "$preset" 2>&1 | tee "$log" |
            awk '/^\[/ { split($1, s, /[][\/]/); if (int(s[2] * 10 / s[3]) > shown) {
                     shown = int(s[2] * 10 / s[3]); print "   " s[2] " of " s[3] " steps"; fflush() }
                     next }
                 /^-- / { next }
                 { print; fflush() }'
        return "${PIPESTATUS[0]}"
    fi
}

# limited COMMAND...: runs it so that file permissions count for the superuser too, as they do for
# everybody else: read-only files are then read-only. Not where build/ is somebody else's, or with
# all_rights set.
limited() {
    local rights=-dac_override,-dac_read_search
    local limit=(setpriv --inh-caps "$rights" --bounding-set "$rights")
    if [ "$(id -u)" = 0 ] && [ -z "${all_rights:-}" ] && "${limit[@]}" test -w build 2>/dev/null; then
        "${limit[@]}" "$@"
    else
        "$@"
    fi
}

# with_wine COMMAND...: runs it, limited, with a display, a prefix of the project's own, and a Wine
# server that lives as long as the command.
with_wine() {
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        say "Making a Wine prefix in build/wine"
        mkdir -p build
        # Unmanaged windows: nobody waits two seconds for a window manager that is not there.
        limited xvfb-run -a bash -c 'wineboot --init &&
            wine reg add "HKCU\Software\Wine\X11 Driver" /v Managed /d N /f &&
            wineserver -w' </dev/null >build/wineboot.log 2>&1 ||
            { cat build/wineboot.log; rm -rf "$WINEPREFIX"; return 1; }
    fi
    # The first program starts Windows' services, which would keep the output of the one that did
    # open: that one is ours.
    limited xvfb-run -a bash -c 'wineserver -p
        wine cmd /c exit </dev/null >/dev/null 2>&1
        export POSTRIDER_RUN=$$
        "$@"; status=$?
        wineserver -k; wineserver -w
        # What own_prefix left that was ended from outside.
        for prefix in {/dev/shm,build}/postrider-prefix.$$.*; do
            [ ! -d "$prefix" ] || { WINEPREFIX=$prefix wineserver -k; rm -rf "$prefix"; }
        done
        exit $status' bash "$@"
}
