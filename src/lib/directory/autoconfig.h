// Configurations chosen from a message's own header when the user gives none.
#pragma once
#include <string>

#include "ediprot.h"

namespace edi {

// The directory data folder: the one a caller chose for the call in
// progress (DirectoriesInUse), else $EDIPROT_DIRECTORIES, else the
// directories folder beside the installed or staged data.
std::string directoriesdir();

// For its lifetime, on this thread, the directory data comes from
// `folder` ("" changes nothing): a caller's choice for one call of the
// library, without a setting the other threads would see.
class DirectoriesInUse {
public:
    explicit DirectoriesInUse(const std::string &folder);
    ~DirectoriesInUse();
    DirectoriesInUse(const DirectoriesInUse &) = delete;
    DirectoriesInUse &operator=(const DirectoriesInUse &) = delete;

private:
    std::string saved_;
};

// Why a message of `type` in `directory` has no generated configuration
// (`havedir`: the directory exists but lacks the message): what was looked
// for, the nearest directory that has the message and where else it is.
std::string missingmessage(const std::string &type, const std::string &directory, bool havedir);

// The generated configuration for `msgtype` as UNH gives it (ORDERS:D:96A:UN
// -> ORDERS of D96A), inbound or outbound, parsed into a tree the caller
// releases with freedatatree; nullptr and a message in err when the header
// names no type or directory, or the data lacks them (the message then names
// the directories that have the message).
datatree_t *configformessage(const std::string &msgtype, bool outbound, std::string &err);

// The message identifier (TYPE:D:96A) for a tree's message node: from
// `given` (ORDERS:D96A or ORDERS:D:96A, as --message takes it) when that
// names this node's type, else from the node's UNH (S009: 0065, 0052, 0054).
// Empty and a message in err when neither names a directory.
std::string messageid(const datatree_t *message, const std::string &given, std::string &err);

}  // namespace edi
