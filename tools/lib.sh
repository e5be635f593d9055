# Shared by run, test and bench: sourced with the project's folder as the current one.

export WINEPREFIX="$PWD/build/wine" WINEARCH=win32 WINEDEBUG=-all
# Without Wine's debugger: a program that crashes ends.
export WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe="
# What a run leaves anywhere bears its number.
export POSTRIDER_RUN=$$

say() { printf '== %s\n' "$*"; }

# need_build_folder PRESET: ends the script in a sentence where what it makes cannot be kept.
need_build_folder() {
    local folder
    mkdir -p build 2>/dev/null || true
    for folder in build "build/$1" build/wine; do
        if [ "$folder" = build ] || [ -e "$folder" ]; then
            [ -d "$folder" ] && [ -w "$folder" ] ||
                { echo "Cannot write to $PWD/$folder, where all that is built goes." >&2; exit 1; }
        fi
    done
    # Wine takes no prefix of another user.
    [ ! -e build/wine ] || [ -O build/wine ] ||
        { echo "$PWD/build/wine belongs to another user: remove it, or be that user." >&2; exit 1; }
}

# attended COMMAND...: runs it in a session of its own. Ctrl-C, TERM or a closed terminal ends all
# that it started, then the script.
attended() {
    local group status=0 ended=
    trap 'ended=130' INT
    trap 'ended=143' TERM
    trap 'ended=129' HUP
    setsid "$@" <&0 &
    group=$!
    wait "$group" || status=$?
    if [ -n "$ended" ]; then
        trap '' INT TERM HUP
        kill -- -"$group" 2>/dev/null || kill "$group" 2>/dev/null || true
        # What takes longer than ten seconds to end is ended by force.
        for _ in {1..100}; do
            kill -0 -- -"$group" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL -- -"$group" 2>/dev/null || true
        wait "$group" 2>/dev/null || true
        sweep
        exit "$ended"
    fi
    trap - INT TERM HUP
    return "$status"
}

# build PRESET: configures once and builds, quietly when there is little to do.
build() {
    local preset=$1 log="build/$1.log"
    need_build_folder "$preset"
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring ($preset)"
        attended cmake --preset "$preset" >"$log" 2>&1 || { cat "$log"; return 1; }
    fi
    say "Building ($preset)"
    # Ninja's own progress line on a terminal; elsewhere every tenth of its steps.
    if [ -t 1 ]; then
        attended cmake --build --preset "$preset"
    else
        attended bash -o pipefail -c 'cmake --build --preset "$1" 2>&1 | tee "$2" | awk "$3"' \
            bash "$preset" "$log" '
                /^\[/ { split($1, s, /[][\/]/); if (int(s[2] * 10 / s[3]) > shown) {
                    shown = int(s[2] * 10 / s[3]); print "   " s[2] " of " s[3] " steps"; fflush() }
                    next }
                /^(-- |ninja: no work)/ { next }
                { print; fflush() }'
    fi
}

# So that file permissions count for the superuser too, as they do for everybody else: read-only
# files are then read-only. Not where build/ is somebody else's, or with all_rights set.
limited() {
    local rights=-dac_override,-dac_read_search
    local limit=(setpriv --inh-caps "$rights" --bounding-set "$rights")
    if [ "$(id -u)" = 0 ] && [ -z "${all_rights:-}" ] && "${limit[@]}" test -w build 2>/dev/null; then
        printf '%s\n' "${limit[@]}"
    fi
}

# Ends what is left of the Wine prefixes of this run, and removes its copies of the project's.
sweep() {
    local prefix
    for prefix in "$WINEPREFIX" "$WINEPREFIX.new" {/dev/shm,build}/postrider-prefix."$POSTRIDER_RUN".*; do
        [ ! -d "$prefix" ] || WINEPREFIX=$prefix wineserver -k 2>/dev/null || true
        [ "$prefix" = "$WINEPREFIX" ] || rm -rf "$prefix"
    done
    [ -z "${run_folder:-}" ] || rm -rf "$run_folder"
}

# with_wine COMMAND...: runs it, limited, with a display, a prefix of the project's own, and a Wine
# server that lives as long as the command.
with_wine() {
    local limit status=0
    mapfile -t limit < <(limited)
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        say "Making a Wine prefix in build/wine"
        # Unmanaged windows: nobody waits two seconds for a window manager that is not there.
        WINEPREFIX=$WINEPREFIX.new attended "${limit[@]}" xvfb-run -a bash -c 'wineboot --init &&
            wine reg add "HKCU\Software\Wine\X11 Driver" /v Managed /d N /f &&
            wineserver -w' </dev/null >build/wineboot.log 2>&1 ||
            { cat build/wineboot.log; sweep; return 1; }
        rm -rf "$WINEPREFIX"
        mv "$WINEPREFIX.new" "$WINEPREFIX"
    fi
    # For temporary files, xvfb-run's among them: it takes no name with a space.
    run_folder=$(mktemp -d /tmp/postrider-run.XXXXXX)
    # The first program starts Windows' services, which would keep the output of the one that did
    # open: that one is ours.
    TMPDIR=$run_folder attended "${limit[@]}" xvfb-run -a bash -c 'wineserver -p
        wine cmd /c exit </dev/null >/dev/null 2>&1
        "$@"; status=$?
        wineserver -k; wineserver -w
        exit $status' bash "$@" || status=$?
    sweep
    return "$status"
}
