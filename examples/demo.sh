#!/usr/bin/env bash
# Shows fits of published points: demo.sh [folder of the built programs]. Fails when a fit differs from its publication.
set -euo pipefail
programs=$(cd "${1:-build/release/examples}" && pwd)
cd "$(dirname "${BASH_SOURCE[0]}")/data"

show() {
    printf '\n$ fit_points %s\n' "$*"
    "$programs/fit_points" "$@"
}

show sphere nist_2000_sphere_sph24.csv
echo
echo 'A real bore, from the probe centres of a coordinate measuring machine: its surface is a probe radius further out.'
show circle --inside --probe-radius 2.49978271104 measured_bore_probe_centres.csv
echo
echo 'Lines, planes, circles and spheres of examples/data, with the values that were published for them:'
show --published *line*.csv *plane*.csv *circle*.csv *bore*.csv *sphere*.csv
