// Values the module's writer will not write as they stand in the tree: a
// text longer than its element's length in the configuration is cut (a
// text element without any length is written as nothing), a character
// outside the interchange's character set becomes a blank, and a byte
// above 127 is dropped.  The module does this without a word; the library
// says where, before it writes, so that nobody sends changed data unawares
// (a cut fails the write unless keep_going).
#ifndef EDI_VALUELOSS_H
#define EDI_VALUELOSS_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

// A value written other than the tree holds it: the line that names it
// ("message 1, $FTX.C108.4440: 80 characters (release characters counted)
// cut to 70") and whether the value is cut (shortened to its length, or
// written as nothing for want of one), which loses data, rather than only
// changed in some characters.
struct ValueChange {
    std::string line;
    bool cut = false;
};

// One per value that will not be written unchanged, for the messages
// first .. last (last NULL: to the end of the chain) of a data tree written
// with `config`; `number` is the number of `first` among the tree's
// messages.  Values are matched with configuration nodes by their
// names from the message node down, as the writer finds them.  `charset`
// is the module's table for characters 0 to 127.
// What becomes of bytes above 127: the module drops them; the library
// carries them past it (write/highbytes.h), where a UTF-8 character counts
// once against a length.
enum class Above127 { dropped, kept, utf8 };

std::vector<ValueChange> valueloss(const datatree_t *first, const datatree_t *last, int number,
                                   const datatree_t *config, const char *charset,
                                   Above127 above = Above127::dropped);

// What the writer does to `value` written by the configuration node `cf`
// ("12 characters (release characters counted) cut to 9", "'_' written as
// blank"), or "" when it writes it as it is; `cut` tells a cut.
std::string valuechange(const char *value, const datatree_t *cf, const char *charset, bool &cut,
                        Above127 above = Above127::dropped);

}  // namespace edi

#endif
