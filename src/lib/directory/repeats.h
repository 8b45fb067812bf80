// How often each element of a segment may repeat, from the directory that
// a message header names: what tells a repeated element (ATT's C956, five
// times) from elements of one number at places of their own (ALI's five
// 4183), which a configuration names alike.
#pragma once
#include <map>
#include <string>
#include <vector>

namespace edi {

// Per segment tag of the directory of `msgtype` (ORDERS:D:96A:UN or
// ORDERS:D:96A), the greatest number of repetitions of each of its
// elements in order; false when the header names no directory the data
// has.
bool elementrepeats(const std::string &msgtype, std::map<std::string, std::vector<int>> &out);

}  // namespace edi
