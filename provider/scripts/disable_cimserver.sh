#!/bin/sh
# Stops the CIM server in order: SIGTERM to the process named in its pid
# file, then a wait for it to end. Only a server that is still there after
# 60 seconds is killed outright.
#
# Fixed paths lie under $SMIS_ROOT when it is set.

root="${SMIS_ROOT:-}"
pidfile="$root/var/run/cimserver.pid"
# DISABLE_CIMSERVER_WAIT shortens the wait for tests.
wait_seconds="${DISABLE_CIMSERVER_WAIT:-60}"
case "$wait_seconds" in
    ''|*[!0-9]*) wait_seconds=60 ;;
esac

if [ ! -r "$pidfile" ]; then
    echo "disable_cimserver: no pid file $pidfile; the CIM server is not running" >&2
    exit 0
fi

pid=$(head -n 1 "$pidfile" | tr -d ' \r\n\t')
case "$pid" in
    ''|*[!0-9]*)
        echo "disable_cimserver: $pidfile does not hold a process id" >&2
        exit 1
        ;;
esac
if [ "$pid" -le 1 ]; then
    echo "disable_cimserver: $pidfile holds the invalid process id $pid" >&2
    exit 1
fi

if ! kill -0 "$pid" 2>/dev/null; then
    echo "disable_cimserver: the CIM server ($pid) is not running"
    exit 0
fi

echo "disable_cimserver: stopping the CIM server ($pid)"
kill -TERM "$pid" 2>/dev/null

elapsed=0
while kill -0 "$pid" 2>/dev/null; do
    if [ "$elapsed" -ge "$wait_seconds" ]; then
        echo "disable_cimserver: the CIM server ($pid) did not end in $wait_seconds s; killing it" >&2
        kill -KILL "$pid" 2>/dev/null
        exit 0
    fi
    sleep 1
    elapsed=$((elapsed + 1))
done

echo "disable_cimserver: the CIM server has stopped"
exit 0
