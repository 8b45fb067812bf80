# 511, then the 512 record below `depth` plain nodes (P1 ...) or loop
# nodes (*L1 ...), or behind `width` tag nodes that answer no record key.
BEGIN {
    print "vda"
    print "  $S511"; print "    rectype edilen=3 editype=string"; print "    version edilen=2 editype=string"
    print "    customer edilen=9 editype=string"; print "    filler edilen=114 editype=string"
    for (k = 0; k < width; k++) print "  $T" k
    s = "  "
    for (k = 1; k <= depth; k++) { print s prefix k; s = s "  " }
    print s "$S512"; print s "  rectype edilen=3 editype=string"; print s "  version edilen=2 editype=string"
    print s "  part edilen=4 editype=string"; print s "  filler edilen=119 editype=string"
}
