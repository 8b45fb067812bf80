// The fuzz entries, compiled into the replay test as they are compiled into
// the fuzzers, so that a regression input replays through the same code.
#include "../../fuzz/entry_configread.cpp"
#include "../../fuzz/entry_edifactread.cpp"
#include "../../fuzz/entry_json.cpp"
#include "../../fuzz/entry_makerecord.cpp"
#include "../../fuzz/entry_treetext.cpp"
#include "../../fuzz/entry_vdaread.cpp"
#include "../../fuzz/entry_writers.cpp"
