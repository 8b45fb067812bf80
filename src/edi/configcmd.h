// edi config: prints a configuration tree generated from the directories.
#pragma once

namespace edi {

// edi config MESSAGE DIRECTORY [--out] [-o FILE] | edi config --list [DIRECTORY]
int configcommand(int argc, char **argv);

}  // namespace edi
