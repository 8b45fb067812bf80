// The objects behind the handles of edi.h.
#ifndef EDI_API_OBJECTS_H
#define EDI_API_OBJECTS_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "edi.h"
#include "findings/report.h"
#include "read/readinput.h"
#include "settings.h"
#include "text/envelopevalues.h"

struct edi_result {
    int status = 0;
    datatree_t *tree = nullptr;
    bool hastext = false;
    std::string text;
    std::vector<std::string> items;    // keys of a read, names of a list
    std::vector<std::string> changes;  // what a read's working copies changed
    edi::Report rep;
    ~edi_result();
};

struct edi_message {
    datatree_t *tree = nullptr;
    edi::EnvelopeValues env;
    edi_envelope view{};
    datatree_t *envtree = nullptr, *grouptree = nullptr;  // the envelope as nodes
    std::string charset;
    std::string reference, type, version, release;
    int number = 0;
    size_t segments = 0;
    edi::Report rep;
    ~edi_message();
};

struct edi_reader {
    edi::Settings settings;
    std::vector<datatree_t *> configs;
    edi::Report rep;
    std::unique_ptr<edi::EdifactReading> reading;
    // The working copy being handed out message by message.
    edi::UnitRead unit;
    struct MessageInfo {
        std::string reference, type, version, release;
        size_t segments = 0;
    };
    std::vector<MessageInfo> infos;
    size_t nextmessage = 0;
    size_t unitstart = 0;           // the first finding of the unit's read
    datatree_t *pending = nullptr;  // message nodes of `unit` not yet given
    int count = 0;                  // messages given
    int lastnumber = 0;             // the number of the last one
    std::string runname;            // message type of the run given last
    int runcount = 0;               // messages of that run so far
    int state = 1;                  // 1 reading, 0 ended, -1 failed
    std::map<int, std::vector<edi::Finding>> validation;  // by message number
    ~edi_reader();
};

namespace edi {

// A result with `status`, all else empty.
edi_result *newresult();

// Settings and configurations from the caller's options; false after the
// reason is reported (configurations loaded so far are released).
bool takeoptions(const edi_options *opt, Settings &s, std::vector<datatree_t *> &configs,
                 Report &rep);
Settings takewriteoptions(const edi_write_options *opt);

// A string the caller frees with edi_free.
char *cstring(const std::string &s, size_t *len);

}  // namespace edi

#endif
