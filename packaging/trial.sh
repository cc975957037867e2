# What the trials of many photos share; to be sourced. They keep their files, logs among them, in $work.

step() { echo "$(basename "$0" .sh): $*"; }
fail() { echo "$(basename "$0" .sh): $*" >&2; tail -n 20 "$work"/*.log >&2; exit 1; }
# within SECONDS CONDITION...
within() {
  tries=$(($1 * 20)); shift
  until "$@" >/dev/null 2>&1; do
    tries=$((tries - 1))
    [ $tries -gt 0 ] || fail "waited in vain for: $*"
    sleep 0.05
  done
}
