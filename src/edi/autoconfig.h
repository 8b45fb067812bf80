// Configurations chosen from a message's own header when the user gives none.
#pragma once
#include <string>

#include "ediprot.h"

namespace edi {

// The directory data folder: $EDIPROT_DIRECTORIES, else the directories
// folder beside the installed or staged data.
std::string directoriesdir();

// The generated configuration for `msgtype` as UNH gives it (ORDERS:D:96A:UN
// -> ORDERS of D96A), inbound or outbound, parsed into a tree the caller
// releases with freedatatree; nullptr and a message in err when the
// directory or the message is not there.
datatree_t *configformessage(const std::string &msgtype, bool outbound, std::string &err);

}  // namespace edi
