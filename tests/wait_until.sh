# shellcheck shell=sh
# For test scripts to include. They define `fail MESSAGE...`, which ends the script.

# wait_until WHAT COMMAND...: fails if COMMAND does not succeed within two minutes.
wait_until() {
    what=$1
    shift
    tries=0
    until "$@" >/dev/null 2>&1; do
        tries=$((tries + 1))
        [ $tries -lt 600 ] || fail "waited too long for $what"
        sleep 0.2
    done
}
