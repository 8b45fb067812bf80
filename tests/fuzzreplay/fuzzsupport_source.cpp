// The fuzz targets' support code, compiled into the replay test as it is
// compiled into each fuzzer.
#include "../../fuzz/fuzzsupport.cpp"
