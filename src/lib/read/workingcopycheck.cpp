#include "read/workingcopycheck.h"

#include "directory/repeats.h"
#include "read/readinput.h"
#include "text/envelopevalues.h"
#include "text/repetitions.h"
#include "text/segments.h"
#include "text/segmenttags.h"

namespace edi {

namespace {

std::string plural(size_t n, const std::string &what)
{
    return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
}

// The repetitions of `text` on the places of `config`; false if some had
// none.
bool placerepetitions(const Unit &u, const datatree_t *config, const std::string &input,
                      bool keepgoing, std::string &text, std::vector<std::string> &changes,
                      std::vector<std::string> &copynotes, Report &rep)
{
    // A layout taken from the message has no repeated places: its values
    // keep their repetition separators.
    if (u.ownlayout)
        return true;
    // Without a repetition separator (syntax versions before 4) there is
    // nothing to place, and the configuration is not walked for it.
    std::string una, unb;
    unitenvelope(u, text, una, unb);
    if (repetitionseparator(una, unb) == 0)
        return true;
    RepetitionLayout layout = repetitionlayout(config);
    std::map<std::string, std::vector<int>> maxima;
    if (elementrepeats(u.msgtype, maxima))
        confirmrepetitions(layout, maxima);
    RepetitionSplit notes;
    text = splitrepetitions(text, layout, notes);
    if (notes.segments > 0) {
        std::string sep = printable(std::string(1, notes.separator));
        std::string note =
            describeunit(u) + ": " +
            (notes.split > 0 ? plural(notes.split, "element") +
                                   " split at the repetition separator '" + sep +
                                   "' onto the places the configuration has for its "
                                   "repetitions; "
                             : "") +
            plural(notes.segments, "segment") +
            " with places of repeated elements, those not used left empty where elements "
            "follow, so that every element keeps its own place";
        copynotes.push_back(note);
    }
    std::string ref = envelopevalues(u.una, u.unb, "").controlref;
    size_t extra = 0;
    for (const TooManyRepetitions &t : notes.toomany) {
        int msg = u.firstmsg > 0 ? u.firstmsg + t.message - 1 : t.message;
        size_t gone = t.found - t.places;
        std::string what = "message " + std::to_string(msg) + ", segment " +
                           std::to_string(t.position) + " (" + printable(t.tag) + ")";
        Finding &f = rep.add(EDI_FINDING_LEFT_OUT,
                             keepgoing ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR, input,
                             what + ": element " + std::to_string(t.element) + " (" +
                                 printable(t.name) + ") holds " + std::to_string(t.found) +
                                 " repetitions, the configuration has " +
                                 plural(t.places, "place") + " for it, so the last " +
                                 (gone == 1 ? "one" : std::to_string(gone)) +
                                 " did not reach the tree");
        f.message = msg;
        f.segment = t.position;
        f.tag = t.tag;
        f.element = t.name;
        f.elementpos = static_cast<int>(t.element);
        f.repetition = static_cast<int>(t.places + 1);
        f.code = 35;  // too many repetitions
        f.interchangeref = ref;
        changes.push_back("left out of the tree: " + what + ", " + plural(gone, "repetition") +
                          " of " + printable(t.name));
        extra += gone;
    }
    if (extra == 0)
        return true;
    std::string sentence = plural(extra, "repetition") +
                           " left out of the tree: an element holds more repetitions than the "
                           "configuration has places for it (" +
                           printable(notes.toomany.front().name) + ", " +
                           printable(notes.toomany.front().name) +
                           "_2 ...); give a configuration with a place for each" +
                           (keepgoing ? "" : ", or --keep-going to accept the tree without them") +
                           ".";
    rep.leftout(input, sentence, keepgoing);
    return keepgoing;
}

// The segments of `text` whose tag is no tag, taken out; false if any.
bool dropbadtags(const Unit &u, const std::string &input, bool keepgoing, std::string &text,
                 std::vector<std::string> &changes, Report &rep)
{
    std::vector<BadTag> bad;
    text = withoutbadtags(text, bad);
    std::string ref = envelopevalues(u.una, u.unb, "").controlref;
    for (const BadTag &b : bad) {
        int msg = u.firstmsg > 0 ? u.firstmsg + b.message - 1 : b.message;
        std::string what = "message " + std::to_string(msg) + ", segment " +
                           std::to_string(b.position) + " ('" + printable(b.tag) + "')";
        Finding &f = rep.add(EDI_FINDING_LEFT_OUT,
                             keepgoing ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR, input,
                             what + ": invalid segment tag: a tag is three letters or digits "
                                    "followed by a separator or the segment's end, so the "
                                    "segment did not reach the tree");
        f.message = msg;
        f.segment = b.position;
        f.tag = b.tag;
        f.interchangeref = ref;
        changes.push_back("left out of the tree: " + what + ", invalid segment tag");
    }
    if (bad.empty())
        return true;
    std::string sentence =
        plural(bad.size(), "segment") +
        " with an invalid tag left out of the tree; ask the sender for a corrected file" +
        (keepgoing ? "" : ", or give --keep-going to accept the tree without them") + ".";
    rep.leftout(input, sentence, keepgoing);
    return keepgoing;
}

}  // namespace

bool checkworkingcopy(const Unit &u, const datatree_t *config, const std::string &input,
                      bool keepgoing, std::string &text, std::vector<std::string> &changes,
                      std::vector<std::string> &copynotes, Report &rep)
{
    return dropbadtags(u, input, keepgoing, text, changes, rep) &&
           placerepetitions(u, config, input, keepgoing, text, changes, copynotes, rep);
}

}  // namespace edi
