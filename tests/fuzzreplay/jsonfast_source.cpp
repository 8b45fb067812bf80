// The fast reader that the JSON import tries first.
#include "../../src/edi/jsonfast.cpp"
