# shellcheck shell=bash
# What the scripts on the doorstep (run, test, bench, .ci/run) have in common. Sourced, never run.
#
# The caller sets `set -euo pipefail` and calls doorstep_begin first. Notes go to standard error, so
# that what a script prints as its result stays alone on standard output.

doorstep_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
doorstep_packages=$doorstep_root/cmake/packages.txt
doorstep_log=/dev/null
doorstep_scratch=
# What was started and must be gone at the end, in the order of starting.
doorstep_processes=()

readonly doorstep_log_end_lines=40
readonly doorstep_display_limit_s=20
readonly doorstep_stop_limit_s=5
readonly doorstep_poll_s=0.1

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "orbisk: $*"
    exit 1
}

# doorstep_begin NAME: opens build/NAME.log and makes sure that nothing outlives the script.
doorstep_begin() {
    mkdir -p "$doorstep_root/build"
    doorstep_log=$doorstep_root/build/$1.log
    : >"$doorstep_log"
    doorstep_scratch=$(mktemp -d)
    trap doorstep_end EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

doorstep_end() {
    # A second Ctrl-C must not cut the tidying short.
    trap '' HUP INT TERM
    local i
    for ((i = ${#doorstep_processes[@]} - 1; i >= 0; --i)); do
        stop_process "${doorstep_processes[i]}"
    done
    doorstep_processes=()
    rm -rf "$doorstep_scratch"
    # A program that takes this script's place would inherit that signals are ignored.
    trap - EXIT HUP INT TERM
}

# started PID: has PID stopped at the end of the script.
started() { doorstep_processes+=("$1"); }

is_running() { kill -0 "$1" 2>/dev/null; }

# wait_for_end PID SECONDS: whether PID ended within that time.
wait_for_end() {
    local end=$((SECONDS + $2))
    while is_running "$1"; do
        ((SECONDS < end)) || return 1
        sleep "$doorstep_poll_s"
    done
}

stop_process() {
    is_running "$1" || return 0
    kill -TERM "$1" 2>/dev/null || true
    wait_for_end "$1" "$doorstep_stop_limit_s" || kill -KILL "$1" 2>/dev/null || true
    # Keeps the shell from printing "Terminated" for it.
    wait "$1" 2>/dev/null || true
}

# alongside COMMAND...: starts COMMAND beside the script, its output in the log, and leaves its
# process number in `alongside_pid`. Should the script itself be killed, COMMAND ends with it.
alongside() {
    setpriv --pdeathsig TERM -- "$@" >>"$doorstep_log" 2>&1 </dev/null &
    alongside_pid=$!
    started "$alongside_pid"
}

show_log_end() {
    say "---- the end of $doorstep_log"
    tail -n "$doorstep_log_end_lines" "$doorstep_log" >&2
    say "----"
}

# logged COMMAND...: runs COMMAND with its output in the log; shows the log's end if it failed.
logged() {
    local status=0
    printf '\n$ %s\n' "$*" >>"$doorstep_log"
    "$@" >>"$doorstep_log" 2>&1 </dev/null || status=$?
    ((status == 0)) || show_log_end
    return "$status"
}

# packages_of SECTION...: the packages of these sections of the list, one a line.
packages_of() {
    local wanted=" $* " section='' line
    while IFS= read -r line || [[ -n $line ]]; do
        line=${line%%#*}
        line=${line//[[:space:]]/}
        if [[ $line == \[*\] ]]; then
            section=${line:1:-1}
        elif [[ -n $line && $wanted == *" $section "* ]]; then
            printf '%s\n' "$line"
        fi
    done <"$doorstep_packages"
}

# missing_packages SECTION...: those of them that are not installed, one a line.
missing_packages() {
    local package present
    local -a wanted
    mapfile -t wanted < <(packages_of "$@")
    # It fails when one of them is unknown, which is an answer like any other here.
    present=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true)
    for package in "${wanted[@]}"; do
        grep -qxF "installed $package" <<<"$present" || printf '%s\n' "$package"
    done
}

# install_packages SECTION...: installs what is missing; touches nothing when nothing is.
install_packages() {
    local -a missing as_root=()
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "This is no Debian: what is listed in cmake/packages.txt has to be there already."
        return 0
    fi
    mapfile -t missing < <(missing_packages "$@")
    ((${#missing[@]})) || return 0

    say "Installing ${#missing[@]} missing packages: ${missing[*]}"
    if ((EUID != 0)); then
        command -v sudo >/dev/null || fail "this needs root and there is no sudo; as root, run:
    apt-get update && apt-get install --no-install-recommends ${missing[*]}"
        sudo -v || fail "the packages can't be installed without sudo"
        as_root=(sudo)
    fi
    # Another installation may be under way, as on a machine that has just been started.
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get
        -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
    logged "${apt[@]}" update || say "The package lists could not all be brought up to date; going on."
    logged "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" ||
        fail "installing the packages failed"
}

# build_preset PRESET [CMAKE OPTION...]: configures and builds build/PRESET.
build_preset() {
    local preset=$1
    shift
    # Lets the compiler cache serve several checkouts, and files built with precompiled headers.
    export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$doorstep_root}
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}

    local first_time=
    [[ -e $doorstep_root/build/$preset/build.ninja ]] || first_time=', which takes some minutes the first time'
    say "Building '$preset'$first_time (log: ${doorstep_log#"$doorstep_root"/})"
    (cd "$doorstep_root" && logged cmake --preset "$preset" "$@") || fail "configuring failed"
    (cd "$doorstep_root" && logged cmake --build --preset "$preset") || fail "the build failed"
}

has_display() { [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]; }

# start_display WIDTHxHEIGHT: starts a virtual display and makes it the one that programs use.
start_display() {
    local number_file=$doorstep_scratch/display number='' server end
    # The server picks a number that is free and writes it to descriptor 3. Left to itself it starts
    # anew whenever its last client leaves, turning away whoever asks for it in that moment.
    alongside Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp -noreset 3>"$number_file"
    server=$alongside_pid
    end=$((SECONDS + doorstep_display_limit_s))
    # `read` fails while the line is not complete.
    until read -r number <"$number_file" 2>/dev/null; do
        if ! is_running "$server" || ((SECONDS >= end)); then
            show_log_end
            fail "the virtual display did not start"
        fi
        sleep "$doorstep_poll_s"
    done
    export DISPLAY=:$number
    # There is no desktop behind it: the toolkit should not start a message bus that stays behind.
    export NO_AT_BRIDGE=1 GSETTINGS_BACKEND=memory
}

# start_window_manager: on the virtual display, so that windows are placed and can be found.
start_window_manager() {
    local end=$((SECONDS + doorstep_display_limit_s))
    alongside openbox --sm-disable
    until wmctrl -m >/dev/null 2>&1; do
        if ! is_running "$alongside_pid" || ((SECONDS >= end)); then
            show_log_end
            fail "the window manager did not start"
        fi
        sleep "$doorstep_poll_s"
    done
}
