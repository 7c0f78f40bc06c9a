#!/bin/bash
# Measures media servers: bench/upnp.sh [PROGRAM] [ITEMS] [RATE]
# How soon a running server is found, and what listing a large container costs beside the server's own answer to the
# same question, asked by curl in the same run. A real server, in a network of its own; as root. RATE, "1gbit", makes
# a line of that network.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
program=${1:-$root/build-bench/nuvid}
exec env NUVID_PROGRAM="$program" PYTHONDONTWRITEBYTECODE=1 python3 "$root/bench/upnp.py" "${2:-2000}" ${3:+"$3"}
