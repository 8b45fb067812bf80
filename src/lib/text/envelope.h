// The envelope of an interchange as partners send it, turned into working
// copies the module reads: a sender or recipient without qualifier gets an
// empty one, group segments (UNG, UNE) go, and a file with several
// interchanges or with messages of different types becomes one working
// copy per interchange and run of messages of one type.
#ifndef EDI_ENVELOPE_H
#define EDI_ENVELOPE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace edi {

// Where one message stands in the text an envelope was cut from.
struct MessagePlace {
    // Its text: UNH up to the next message or service segment, with
    // anything that stands between its UNT and the next message.
    std::vector<std::pair<size_t, size_t>> ranges;
    size_t begin = 0, end = 0;  // UNH up to and with its first UNT
    bool closed = false;        // a UNT closes it before any other UNH
};

// One working copy: UNA (if the file has one), UNB, messages, UNZ.  A copy
// of a large interchange is not copied out of it: its messages are places
// in `source`, and `text` holds only what stands in front of them, until
// unittext() puts the copy together.
struct Unit {
    std::string text;
    std::shared_ptr<const std::string> source;  // NULL: `text` is the whole copy
    std::vector<MessagePlace> places;           // with `source`: one per message
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

// The same copies, their messages left in place in `text`, which they
// share: the memory of a read stays that of the input and the message
// being read.
std::vector<Unit> prepareenvelope(std::shared_ptr<const std::string> text,
                                  EnvelopeNotes &notes);

// The whole text of a working copy.
std::string unittext(const Unit &u);

// The pieces a working copy's text is made of, in order, without copying
// them: `text`, the messages, the UNZ.
std::vector<std::string_view> unitpieces(const Unit &u);

// True if `u` holds several messages, each at a place in its source with
// a UNT of its own, so that it can be cut into one copy per message.
bool cuttable(const Unit &u);

// What a copy of message `m` (from 0) of `u` has of `u`: its envelope, its
// message's number and group; no text.
Unit messageframe(const Unit &u, size_t m);

// The copy of message `m` (from 0) of a cuttable copy: its head, the
// message's UNH up to its UNT, its UNZ.
Unit messagepart(const Unit &u, size_t m);

// What a unit is, for messages: "interchange 2, messages 3 to 4 (INVOIC:D:96A:UN)".
std::string describeunit(const Unit &u);

}  // namespace edi

#endif
