#!/bin/sh
# Writes the map of one channel of the warped wall: a warp mesh of 9 x 6 nodes from the channel's picture to the screen.
# usage: generate.sh left|right > FILE
set -eu
case ${1:?usage: generate.sh left|right} in
left) middle=0.28 ;;
right) middle=0.72 ;;
*) echo "generate.sh: left or right" >&2; exit 2 ;;
esac
LC_ALL=C awk -v middle="$middle" 'BEGIN {
    columns = 9; rows = 6; aspect = 1.6
    print 2; print columns, rows
    for (row = 0; row < rows; row++)
        for (column = 0; column < columns; column++) {
            # The lens bends the edges of the picture inwards, at the corners most.
            x = 2 * column / (columns - 1) - 1; y = 2 * row / (rows - 1) - 1
            printf "%.6f %.6f %.6f %.6f 1\n", aspect * x, y,
                middle + 0.28 * x * (1 - 0.06 * y * y), 0.5 + 0.48 * y * (1 - 0.05 * x * x)
        }
    print "pixels 1920 1200"
}'
