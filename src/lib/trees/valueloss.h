// Values the module's writer will not write as they stand in the tree: a
// text longer than its element's length in the configuration is cut, a
// character outside the interchange's character set becomes a blank, and
// a byte above 127 is dropped.  The module does this without a word; the
// command says where, before it writes, so that nobody sends changed data
// unawares.
#ifndef EDI_VALUELOSS_H
#define EDI_VALUELOSS_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

// One line per value that will not be written unchanged ("message 1,
// $FTX.C108.4440: 80 characters cut to 70"), for the messages
// first .. last (last NULL: to the end of the chain) of a data tree written
// with `config`; `number` is the number of `first` among the tree's
// messages.  Values are matched with configuration nodes by their
// names from the message node down, as the writer finds them.  `charset`
// is the module's table for characters 0 to 127.
std::vector<std::string> valueloss(const datatree_t *first, const datatree_t *last, int number,
                                   const datatree_t *config, const char *charset);

}  // namespace edi

#endif
