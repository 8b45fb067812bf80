// The envelope of an interchange as partners send it, turned into working
// copies the module reads: a sender or recipient without qualifier gets an
// empty one, group segments (UNG, UNE) go, and a file with several
// interchanges or with messages of different types becomes one working
// copy per interchange and run of messages of one type.
#ifndef EDI_ENVELOPE_H
#define EDI_ENVELOPE_H

#include <string>
#include <vector>

namespace edi {

// One working copy: UNA (if the file has one), UNB, messages, UNZ.
struct Unit {
    std::string text;
    int interchange = 1;              // counted from 1 in the file
    int firstmsg = 0, lastmsg = 0;    // message numbers in the file, from 1; 0 if none
    std::string msgtype;              // type:version:release:agency of its messages
    bool ownlayout = false;           // read with a layout taken from its one message
    // The envelope as received: UNA ("" when none) and UNB segments, and
    // the UNG each message stands in ("" for none), one per message.
    std::string una, unb;
    std::vector<std::string> groups;
    // The trailers as received: the UNZ ("" when the file has none) and the
    // UNE closing each message's group ("" for none), one per message.
    std::string unz;
    std::vector<std::string> groupends;
};

struct EnvelopeNotes {
    std::vector<std::string> changes;  // one line per change, for the user
    int messages = 0;                  // UNH segments in the file
    std::vector<std::string> faults;   // what makes the envelope unacceptable
};

// Working copies of `text` (an interchange without transport bytes).  A
// text that does not begin with UNB (behind an optional UNA) comes back
// whole as one copy: the module shall refuse it with its own message.
std::vector<Unit> prepareenvelope(const std::string &text, EnvelopeNotes &notes);

// What a unit is, for messages: "interchange 2, messages 3 to 4 (INVOIC:D:96A:UN)".
std::string describeunit(const Unit &u);

}  // namespace edi

#endif
