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
echo 'A real tube in eight points of a laser tracker, and a cone, both found without a start value. From a wrong one a fit'
echo 'ends in other cylinders and cones, whose deviations are 70 times these and more.'
show cylinder measured_tube.csv
show cone nist_2000_cone_con10.csv
echo
echo 'An ellipse, and beside it the direct one of the same points: it takes one pass, but distances of another kind'
echo 'count in it, and with these points that is another ellipse.'
show ellipse gander_golub_strebel_1994_ellipse.csv
show direct_ellipse gander_golub_strebel_1994_ellipse.csv
echo
echo 'A torus:'
sed -n 's/^# //p' made_torus.csv
show torus made_torus.csv
echo
echo 'All of examples/data that was published, with the values that were published for it:'
show --published *line*.csv *plane*.csv *circle*.csv *bore*.csv *ellipse*.csv *sphere*.csv *cylinder*.csv *tube*.csv \
    *cone*.csv
echo
echo 'A measured part comes back to its nominal shape:'
printf '\n$ align_part\n'
"$programs/align_part"
echo
echo 'A part that lies anywhere comes home by its reference points:'
printf '\n$ reference_points\n'
"$programs/reference_points"
echo
echo 'A measured section gets its four circles, and a picture of them:'
printf '\n$ roundness measured_roundness.csv\n'
"$programs/roundness" measured_roundness.csv "$programs/roundness.svg"
