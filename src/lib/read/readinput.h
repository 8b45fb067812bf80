// One input of a read: its working copies, the module's calls, and what
// the library has to say about them, as findings.
#ifndef EDI_READINPUT_H
#define EDI_READINPUT_H

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ediprot.h"
#include "findings/report.h"
#include "module/module.h"
#include "settings.h"
#include "text/compositepad.h"
#include "text/envelope.h"

namespace edi {

// What a read of a whole input gives.
struct ReadResult {
    datatree_t *tree = nullptr;         // owned by the caller; NULL on failure
    std::vector<std::string> keys;      // one per working copy the module keyed
    std::vector<std::string> changes;   // what the working copies changed
};

// One working copy as the module read it.
struct UnitRead {
    datatree_t *tree = nullptr;  // the root the module gave; owned by the receiver
    Unit unit;
    std::string text;            // the working copy the module read
    std::string key;             // the service configuration key, if any
    std::string charset;         // the set its text is in ("ISO-8859-1", "UTF-8", ...)
};

// The UNA ("" when none) and UNB a working copy's messages came in: those
// of the file's envelope, or for a raw read those of the copy itself.
void unitenvelope(const UnitRead &ur, std::string &una, std::string &unb);
void unitenvelope(const Unit &unit, std::string_view text, std::string &una, std::string &unb);

class Generated;

// An EDIFACT interchange read working copy by working copy.  Each copy is
// an interchange (or part of one) of messages of one type; configurations
// are taken as given (one for all, or one per message type), else from the
// service configuration, else generated from the directory each UNH names,
// else taken from the message itself.  With settings.raw the module gets
// the bytes untouched as one copy.
class EdifactReading {
public:
    EdifactReading(const Module &mod, const Settings &opt, std::vector<datatree_t *> configs,
                   std::string input, std::string bytes, Report &rep);
    ~EdifactReading();
    EdifactReading(const EdifactReading &) = delete;
    EdifactReading &operator=(const EdifactReading &) = delete;

    // The next working copy as read, in file order; false at the end or
    // after a failure (reported; failed() is then true).
    bool next(UnitRead &out);
    bool failed() const { return failed_; }
    // What the working copies changed, so far.
    const std::vector<std::string> &changes() const { return changes_; }
    // The messages the envelope counted.
    int messages() const { return messages_; }
    // The message node names of the messages left to other workers since
    // the last call ("" where the name is not known before reading).
    std::vector<std::string> takeskipped() { return std::move(skipped_); }

private:
    bool prepare(std::string bytes);
    // The set the copy's text is in: the one its syntax identifier declares,
    // or UTF-8 where that is a single-byte set but the text is UTF-8 (noted
    // once per interchange).
    std::string textcharset(const Unit &unit, const std::vector<std::string_view> &pieces);
    int utf8noted_ = 0;
    std::map<int, std::string> charsets_;  // by interchange, once told
    std::vector<std::string> skipped_;
    const Module &mod_;
    Settings opt_;
    std::vector<datatree_t *> configs_;
    std::string input_;
    Report &rep_;
    // The next copy to read, false at the end: first those put in front
    // of the rest (a copy read again, cut in its messages), then the
    // messages of the copy being cut, then the copies of the envelope.
    bool takeunit(Unit &u);
    // Notes what the preparation of a copy changed.  A change made to
    // every message of a large interchange would be noted once per
    // message: the first maxcopychanges are kept, the rest counted, so
    // that the memory of a read does not grow with the number of messages.
    void notecopychanges(const std::vector<std::string> &notes);
    // The composite places of a configuration, taken once per
    // configuration of the read (`own`: a layout taken from one message).
    const CompositePlaces &compositesof(const datatree_t *config, bool own);
    std::map<const datatree_t *, CompositePlaces> composites_;
    CompositePlaces owncomposites_;
    static constexpr size_t maxcopychanges = 1000;
    size_t copychanges_ = 0;
    std::vector<Unit> units_;
    size_t at_ = 0;
    std::deque<Unit> ahead_;
    Unit cutting_;
    size_t cutat_ = 0;
    bool failed_ = false;
    int messages_ = 0;
    std::vector<std::string> changes_;
    std::unique_ptr<Generated> gen_;
};

// The whole input into one tree, the messages of all working copies under
// the first root in file order and numbered as one read numbers them.
ReadResult readedifactinput(const Module &mod, const Settings &opt,
                            const std::vector<datatree_t *> &configs, const std::string &input,
                            std::string bytes, Report &rep);

// Reads a VDA record file; records the module could not place make it fail
// unless opt.keepgoing.
ReadResult readvdainput(const Module &mod, const Settings &opt, datatree_t *config,
                        const std::string &input, const std::string &bytes, Report &rep);

// Numbers the message nodes of a root 1, 2, ... per run of one type, as
// one read of them all would.
void renumbermessages(datatree_t *root);

}  // namespace edi

#endif
