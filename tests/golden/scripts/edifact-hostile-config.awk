# The message loop with UNH, then either the FTX segment `depth` loops
# deep or `width` FTX tag nodes side by side, and UNT.
BEGIN {
    print "edi"; print "  *MSG"
    print "    $UNH iseditag=1 ediforce=mand"; print "      0062 edimaxlen=14"
    print "      S009"; print "        0065 edimaxlen=6"; print "        0052 edimaxlen=3"
    s = "    "
    for (k = 1; k <= depth; k++) { print s "*L" k; s = s "  " }
    if (width == 0) {
        print s "$FTX iseditag=1"; print s "  4451 edimaxlen=3"; print s "  4453 edimaxlen=3"
        print s "  C108"; print s "    4440 edimaxlen=35"
    }
    for (k = 0; k < width; k++) { print "    $FTX iseditag=1"; print "      4440 edimaxlen=35" }
    print "    $UNT iseditag=1"; print "      0074 edimaxlen=6"; print "      0062 edimaxlen=14"
}
