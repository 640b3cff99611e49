#!/bin/sh
# First process of a private PID namespace. The command runs as its child, so
# it gets the signal handling of an ordinary process (PID 1 ignores signals
# it has no handler for) and orphans left behind are reaped here.
"$@"
exit $?
