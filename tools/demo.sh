#!/bin/sh
# Shows the main job on links of this machine's kernel. Run as: sh tools/demo.sh LINKFLAPD
#
# In a network namespace of its own, invisible to the rest of the machine, two ports are made: et1
# and et2, each wired to a far end (far1, far2). linkflapd guards the ports; far1 flaps until et1 is
# err-disabled and shut, while et2 behaves.
#
# Ends with 0 when et1 was shut and et2 left up, with 77 when the machine permits no namespace, and
# with another number when something went wrong. Takes about five seconds, never more than 30.
set -eu

max_flaps=3
interval=10
limit=20 # seconds, for the wait until the port is shut

say() { printf '\n== %s\n' "$*"; }
fail() {
  printf 'demo: %s\n' "$*" >&2
  exit 1
}

if [ "${1-}" != --inside ]; then
  [ $# -eq 1 ] || {
    echo "usage: sh tools/demo.sh LINKFLAPD" >&2
    exit 2
  }
  [ -x "$1" ] || fail "'$1' is not a program; build linkflapd first"
  for tool in ip unshare timeout mkfifo; do
    command -v "$tool" >/dev/null || fail "'$tool' is missing (Debian: iproute2, util-linux, coreutils)"
  done
  # As root a network namespace is enough; anyone else needs a user namespace around it.
  for kind in -n -Urn; do
    if unshare "$kind" true 2>/dev/null; then exec unshare "$kind" sh "$0" --inside "$1"; fi
  done
  echo "demo: this machine permits neither root's network namespaces nor rootless ones;" >&2
  echo "demo: run it as root, or where unprivileged user namespaces are enabled" >&2
  exit 77
fi

linkflapd=$2
work=$(mktemp -d)
agent=
flapper=
cleanup() {
  trap '' INT TERM HUP
  for process in $flapper $agent; do kill "$process" 2>/dev/null || :; done
  wait
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
trap 'exit 129' HUP

is_set_up() { ip -o link show dev "$1" | grep -q '[<,]UP[,>]'; }
has_carrier() { ip -o link show dev "$1" | grep -q '[<,]LOWER_UP[,>]'; }
# wait_for SECONDS COMMAND...: until the command succeeds; fails when the time is over.
wait_for() {
  tries=$(($1 * 20))
  shift
  until "$@"; do
    tries=$((tries - 1))
    [ "$tries" -gt 0 ] || return 1
    sleep 0.05
  done
}

say "two ports, et1 and et2, each with a far end"
for port in 1 2; do
  ip link add "et$port" type veth peer name "far$port" || fail "this kernel makes no veth links"
  ip link set "far$port" up
  ip link set "et$port" up
done
for port in et1 et2; do wait_for 5 has_carrier "$port" || fail "$port got no carrier"; done
ip -br link show type veth

# One return to up every 0.6 s, until somebody shuts the port.
flap_until_shut() {
  while is_set_up "$1"; do
    ip link set "$2" down
    sleep 0.3
    ip link set "$2" up
    sleep 0.3
  done
}

say "linkflapd --enforce --max-flaps $max_flaps --interval $interval et1 et2"
mkfifo "$work/events"
# In the foreground, timeout passes SIGTERM on once and sends no SIGCONT after it: that one could
# undo the stop with which a leak check of a sanitized linkflapd begins when it ends, for ever.
timeout --foreground "$limit" "$linkflapd" --enforce --max-flaps "$max_flaps" --interval "$interval" et1 et2 \
  >"$work/events" 2>&1 &
agent=$!
exec 3<"$work/events"

shut=no
while [ "$shut" = no ] && IFS= read -r line <&3; do
  printf '%s\n' "$line"
  case $line in
    *" ready: "*)
      say "the far end of et2 flaps once, that of et1 again and again"
      ip link set far2 down
      ip link set far2 up
      flap_until_shut et1 far1 &
      flapper=$!
      ;;
    *" et1: err-disabled "*"; port shut") shut=yes ;;
  esac
done
[ "$shut" = yes ] || fail "linkflapd ended, or $limit s passed, before et1 was shut"

say "what the kernel says of the ports"
ip -d link show dev et1
ip -d link show dev et2
if is_set_up et1; then fail "linkflapd says that it shut et1, but et1 is up"; fi
if ! is_set_up et2 || ! wait_for 5 has_carrier et2; then fail "et2 is down, though it behaved"; fi

say "SIGTERM: linkflapd ends and leaves the ports as they are"
kill -TERM "$agent"
cat <&3
wait "$agent" || fail "linkflapd ended with status $?"
agent=
if is_set_up et1; then fail "et1 came up again"; fi
say "done: et1 was err-disabled and is DOWN, et2 is UP"
