// The edi command's JSON import and export, which the json entry drives.
#include "../../src/edi/jsontree.cpp"
