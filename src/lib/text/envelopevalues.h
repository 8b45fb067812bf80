// The values of an interchange's envelope as the partner sent them: the
// service characters of UNA and the fields of UNB and UNG, for a caller
// that answers the partner or files the message by its sender.
#ifndef EDI_ENVELOPEVALUES_H
#define EDI_ENVELOPEVALUES_H

#include <string>

namespace edi {

struct EnvelopeValues {
    char cmp = ':', dst = '+', dec = '.', rel = '?', rep = ' ', seg = '\'';
    bool una = false;
    std::string syntaxid, syntaxversion, sender, senderqual, recipient, recipientqual, date,
        time, controlref, applicationref, testindicator;
    bool ung = false;
    std::string groupid, groupsender, grouprecipient, groupref;
    int interchange = 0;
};

// The values of `una` ("" when the interchange has none), `unb` and `ung`
// ("" for none), each a segment as received with its terminator.  Values
// lose their release characters; a field the segment lacks is "".
EnvelopeValues envelopevalues(const std::string &una, const std::string &unb,
                              const std::string &ung);

}  // namespace edi

#endif
