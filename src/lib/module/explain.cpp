#include "module/explain.h"

#include <string.h>

#include "text/segments.h"

namespace edi {

namespace {

bool has(const std::vector<std::string> &lines, const std::string &part)
{
    for (const std::string &l : lines)
        if (l.find(part) != std::string::npos)
            return true;
    return false;
}

// The text between < and > of the first line holding `part`.
std::string bracketed(const std::vector<std::string> &lines, const std::string &part)
{
    for (const std::string &l : lines) {
        if (l.find(part) == std::string::npos)
            continue;
        size_t a = l.find('<'), b = l.rfind('>');
        if (a != std::string::npos && b != std::string::npos && b > a)
            return l.substr(a + 1, b - a - 1);
    }
    return "";
}

}  // namespace

std::string explainread(const std::vector<std::string> &modlines, const std::string &text,
                        bool raw)
{
    size_t length = text.size();
    std::vector<Segment> segs = cutsegments(text);
    if (!segs.empty() && segs[0].tag == "UNA")
        segs.erase(segs.begin());
    std::string firsttag = segs.size() > 0 ? segs[0].tag : "";
    std::string secondtag = segs.size() > 1 ? segs[1].tag : "";
    bool hasunh = false, spaced = false;
    for (const Segment &s : segs) {
        hasunh = hasunh || s.tag == "UNH";
        spaced = spaced || (s.begin < s.end && strchr("\r\n\t ", text[s.begin]) != nullptr);
    }
    if (has(modlines, "is not an edi-file")) {
        if (length < 9)
            return "the file is empty or too short to hold an interchange; check that the "
                   "transfer delivered the whole file.";
        return std::string("the file does not begin with UNA or UNB") +
               (raw ? "" : " (after a byte-order mark and line ends)") +
               ", so it holds no EDIFACT interchange or something stands in front of its "
               "header; remove what stands before UNA/UNB or check that this is the right file.";
    }
    if (has(modlines, "segment longer than"))
        return "a segment runs over 8191 characters, most likely because the file ends its "
               "segments with another character than its UNA (or the default ') says; check "
               "the service characters.";
    if (has(modlines, "segment terminator"))
        return "the UNA names a segment terminator outside 7-bit ASCII, which can end no "
               "segment; correct the UNA.";
    bool oneline = segs.size() == 1 && !segs[0].terminated;
    if ((has(modlines, "no sender") || has(modlines, "no doctype")) && oneline &&
        text.find('\n') != std::string::npos)
        return "the file has no segment terminator, so it is one long segment; its segments "
               "seem to end at line ends, which only a UNA can declare (UNA:+.? and a line "
               "end as its last character); ask the sender for a corrected file.";
    if ((has(modlines, "no sender") || has(modlines, "no doctype")) && spaced)
        return "line ends or blanks stand between the segments, and the module reads them as "
               "the start of the next segment's tag; read the file without --raw.";
    if (has(modlines, "no sender")) {
        if (firsttag != "UNB")
            return "the interchange does not begin with a UNB segment (found " +
                   (firsttag.empty() ? std::string("nothing") : firsttag) +
                   "), so it has no sender identification; the file is no complete interchange.";
        return "the UNB has no sender identification (its second element is empty or "
               "missing); the sender must fill it, or the file must be corrected before reading.";
    }
    if (has(modlines, "no doctype")) {
        if (!hasunh)
            return "the interchange holds no message (no UNH segment); there is nothing to read.";
        if (secondtag != "UNH")
            return "the segment behind the UNB is " + secondtag +
                   ", not the UNH of the first message; such a segment between the interchange "
                   "header and the first message cannot be read, remove it from the file.";
        return "the UNH has no message type in its second element; the sender must fill it.";
    }
    if (has(modlines, "not found")) {
        std::string key = bracketed(modlines, "not found");
        return "no configuration is known for the key " + key +
               " (message type _ sender); give one with --config FILE or add the key to the "
               "service configuration given with --servconf.";
    }
    if (has(modlines, "readconfig"))
        return "the configuration file " + bracketed(modlines, "readconfig") +
               " that the service configuration names could not be read (see above); "
               "correct the file or the entry.";
    if (has(modlines, "copysubtree failed"))
        return "the configuration has nothing under its root, so it describes no message; "
               "give a configuration with a message node.";
    return "the module refused the file (see the lines above); check the file against the "
           "configuration.";
}

std::string explainwrite(const std::vector<std::string> &modlines)
{
    if (has(modlines, "mandatory"))
        return "the tree lacks the mandatory elements named above, so no interchange was "
               "written; fill them in the tree or give them a default in the configuration.";
    if (has(modlines, "sender or recipient"))
        return "sender and recipient are both needed; give --sender and --recipient.";
    return "the interchange could not be written (see the lines above); nothing was kept.";
}

}  // namespace edi
