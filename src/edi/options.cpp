#include "options.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include "paths.h"

namespace edi {

namespace {

struct CommandHelp {
    const char *name;
    const char *text;
};

const CommandHelp helps[] = {
    {"", "usage: edi COMMAND [OPTIONS] FILE...\n"
         "\n"
         "Converts EDIFACT interchanges and VDA record files to trees and back.\n"
         "\n"
         "commands:\n"
         "  read       EDIFACT interchange(s) to a tree\n"
         "  write      a tree to an EDIFACT interchange\n"
         "  vda-read   VDA record file(s) to a tree\n"
         "  vda-write  a tree to a VDA record file\n"
         "  validate   EDIFACT interchange(s) against their directories\n"
         "  ack        CONTRL acknowledgements for EDIFACT interchange(s)\n"
         "  config     a configuration generated from a directory\n"
         "\n"
         "options for every command:\n"
         "  --trace LEVEL  trace level 0 to 15 (trace lines on stderr)\n"
         "  --help         help for the program or a command\n"
         "  --version      the program's version\n"
         "\n"
         "exit status: 0 success, 1 the conversion failed, 2 usage error.\n"
         "'edi COMMAND --help' describes a command.\n"},
    {"read", "usage: edi read INPUT... [--servconf FILE | --config FILE...]\n"
             "                [--format tree|json|ndjson] [--full | --form compact|full]\n"
             "                [--raw] [--join-lines] [--keep-going] [--verbose]\n"
             "                [--validate [--max-errors N]] [--report FILE] [-j N] [-o OUT]\n"
             "\n"
             "Reads each EDIFACT interchange into a tree.  The configuration is\n"
             "chosen by the file's document type and sender from the service\n"
             "configurations of --servconf, or given with --config (given several\n"
             "times: one per message type).  The module reads a working copy:\n"
             "without byte-order mark and line ends between segments, a sender\n"
             "without qualifier given an empty one, group segments taken out, one\n"
             "copy per interchange and message type; --verbose lists the changes,\n"
             "--raw reads the file as it is.  The key doctype_sender is reported\n"
             "on stderr (tree format) or in the \"key\" field (json).  Without\n"
             "--format, -o OUT ending in .json gives json, else tree.  With several\n"
             "INPUT files or a folder and -o, OUT is a folder that receives one\n"
             "result per input.  -j N reads N inputs at once in processes of\n"
             "their own and ends with a summary.  Segments the configuration has\n"
             "no place for are listed and fail the read unless --keep-going.\n"
             "--validate also checks each file against its directories as edi\n"
             "validate does, on stderr.  --report FILE writes every finding of\n"
             "the read (and of --validate) as JSON (docs/validation.md).  Without\n"
             "--config or --servconf each message type's configuration is\n"
             "generated from the directory its UNH names.  The tree is written in\n"
             "its compact form, the nodes that carry data with name, value and\n"
             "loop number; --full (--form full) writes every field of every node.\n"
             "--format ndjson writes one line of JSON per message (its envelope\n"
             "values and its compact tree) as soon as it is read.  INPUT - reads\n"
             "standard input; without -o, or with -o -, the result goes to\n"
             "standard output.  --join-lines is accepted and changes nothing.\n"},
    {"validate", "usage: edi validate INPUT... [--format text|json] [--max-errors N] [--verbose]\n"
                 "\n"
                 "Checks each EDIFACT interchange against the directory that each\n"
                 "message header names and prints one line per finding: file, message\n"
                 "number, segment position (UNH is 1) and tag, and what is wrong: a\n"
                 "mandatory segment, group or element missing, a segment or group\n"
                 "repeated more often than allowed, a segment with no place in the\n"
                 "structure, a value longer than its representation, a non-numeric\n"
                 "value in a numeric element, a code not in its code list, a UNT\n"
                 "count or reference that does not match.  A VDA record file (511 to\n"
                 "519, 711 to 719) is checked against its layout: record length and\n"
                 "type, numbers, dates, mandatory fields, order, trailer counts.\n"
                 "--format json writes one JSON document per input with every\n"
                 "finding, its place and its syntax error code (docs/validation.md);\n"
                 "--max-errors N stops after N findings of an input.  Exit status 1\n"
                 "when anything was found.\n"},
    {"write", "usage: edi write TREE [--config FILE... | --message TYPE:DIRECTORY]\n"
              "                 [--sender ID[:QUAL[:ROUTING]]] [--recipient ID[:QUAL[:ROUTING]]]\n"
              "                 [--syntax UNOC:3] [--application-ref REF] [--ack-request]\n"
              "                 [--group ID] [--test] [--reference REF | --exact]\n"
              "                 [--keep-going] [--verbose] [-o OUT]\n"
              "\n"
              "Writes the tree (tree text or JSON, told apart by content) as\n"
              "EDIFACT interchanges with the outbound configuration FILE (given\n"
              "several times: one per message type of the tree).  Without --config\n"
              "each message type's configuration is generated from the directory\n"
              "its UNH names (S009), or from --message (ORDERS:D96A).  A tree read\n"
              "from an interchange carries its envelope (UNA, UNB, UNG), which is\n"
              "written back; the options set what they name over it, and a tree\n"
              "without envelope needs --sender and --recipient.  --syntax sets the\n"
              "syntax identifier and version (version 4 dates are CCYYMMDD),\n"
              "--group puts the messages in a functional group, --test marks the\n"
              "interchange as a test.  UNT and UNZ counts are corrected, each UNT\n"
              "gets its UNH's message reference, and UNB and UNZ get the control\n"
              "reference REF, the envelope's, or a generated unique one\n"
              "(--verbose lists each change); --exact keeps the module's output\n"
              "as it is.  The tree may be in the full or the compact form.  TREE -\n"
              "reads standard input; without -o, or with -o -, the interchange goes\n"
              "to standard output.  A value of the tree that the configuration has\n"
              "no place for, or that would be cut to its length, is named and fails\n"
              "the write, and nothing is written; --keep-going writes the interchange\n"
              "without it (or cut) and names it as a warning.  A VDA tree is refused.\n"},
    {"ack", "usage: edi ack INPUT... [--errors-only] [--reference REF] [--max-errors N]\n"
            "               [--verbose] [-o OUT]\n"
            "\n"
            "Validates each EDIFACT interchange and writes the CONTRL syntax and\n"
            "service report to send back: an interchange addressed to its sender\n"
            "(sender and recipient exchanged, the inbound syntax identifier and\n"
            "version) whose UCI names the inbound control reference and whose UCM\n"
            "accepts (7) or rejects (4) each message, with a UCS for each faulty\n"
            "segment and a UCD for each faulty element and its syntax error code.\n"
            "--errors-only writes nothing for an interchange without rejection.\n"
            "With several INPUT files, OUT is a folder (INPUT.contrl.edi each).\n"
            "Exit status 1 when something was rejected (docs/acknowledgements.md).\n"},
    {"vda-read", "usage: edi vda-read INPUT... [--config FILE] [--format tree|json]\n"
                 "                    [--full | --form compact|full] [--raw] [--keep-going]\n"
                 "                    [--verbose] [-j N] [-o OUT]\n"
                 "\n"
                 "Reads each VDA record file into a tree: VDA 4905 (records 511 to 519)\n"
                 "or VDA 4913 (711 to 719) with the bundled configuration its first\n"
                 "record names, or with the configuration FILE.  Every record is kept\n"
                 "in file order; repetitions (transmissions, call-offs, transports,\n"
                 "delivery notes, items, records of one type in a row) become loop\n"
                 "instances.  A file without any VDA record is refused.  Records the\n"
                 "configuration cannot place are listed and fail the read unless\n"
                 "--keep-going; --raw hands the file to the module's own reader.\n"
                 "Without --format, -o OUT ending in .json gives json, else tree.\n"
                 "With several INPUT files or a folder and -o, OUT is a folder.\n"
                 "The tree is compact as with read; --full writes every field.\n"
                 "INPUT - reads standard input; no -o, or -o -, standard output.\n"},
    {"vda-write", "usage: edi vda-write TREE [--config FILE] [--keep-going] [--verbose]\n"
                  "                     [-o OUT]\n"
                  "\n"
                  "Writes the tree (tree text or JSON) as a VDA record file, each\n"
                  "transmission with its trailer (519 or 719) counting what is written,\n"
                  "by the bundled configuration of the tree's records or the\n"
                  "configuration FILE.  A tree without VDA records, or with EDIFACT\n"
                  "messages, is refused.  A value that the configuration has no place\n"
                  "for, or that would be cut to its field, is named and fails the write;\n"
                  "--keep-going writes the file without it (or cut) and names it as a\n"
                  "warning.  OUT is written whole or not at all.  --verbose also shows\n"
                  "the writer's line for each record.  TREE - reads standard input;\n"
                  "without -o, or with -o -, the file goes to standard output.\n"},
};

// The options each command takes (by their main name); --trace, --help
// and --version go with every command.
struct CommandOptions {
    const char *command;
    std::vector<std::string> options;
};

const CommandOptions commandoptions[] = {
    {"read", {"--servconf", "--config", "--format", "--form", "--full", "--raw", "--keep-going",
              "--verbose", "--validate", "--max-errors", "--report", "-j", "-o", "--join-lines"}},
    {"vda-read", {"--config", "--format", "--form", "--full", "--raw", "--keep-going", "--verbose",
                  "-j", "-o"}},
    {"write", {"--config", "--message", "--sender", "--recipient", "--test", "--reference",
               "--syntax", "--application-ref", "--ack-request", "--group",
               "--exact", "--keep-going", "--verbose", "-o"}},
    {"vda-write", {"--config", "--keep-going", "--verbose", "-o"}},
    {"validate", {"--format", "--max-errors", "--verbose"}},
    {"ack", {"--errors-only", "--reference", "--max-errors", "--verbose", "-o"}},
};

// The main name of an option as given: the part before '=', aliases
// replaced.
std::string mainname(const std::string &a)
{
    std::string n = a.substr(0, a.find('='));
    if (n == "--output")
        return "-o";
    if (n == "--jobs" || (n.size() > 2 && n.compare(0, 2, "-j") == 0 && n[1] == 'j'))
        return "-j";
    if (n == "-v")
        return "--verbose";
    return n;
}

// The first option given that `command` does not take, or "".
std::string foreignoption(const Options &opt)
{
    for (const CommandOptions &c : commandoptions) {
        if (opt.command != c.command)
            continue;
        for (const std::string &g : opt.given)
            if (g != "--trace" && g != "--help" && g != "--version" &&
                std::find(c.options.begin(), c.options.end(), g) == c.options.end())
                return g;
    }
    return "";
}

bool usage(const char *fmt, const char *arg)
{
    fputs("edi: ", stderr);
    fprintf(stderr, fmt, arg);
    fputs("\nTry 'edi --help'.\n", stderr);
    return false;
}

}  // namespace

const char *helptext(const std::string &command)
{
    for (const CommandHelp &h : helps)
        if (command == h.name)
            return h.text;
    return helps[0].text;
}

bool parseoptions(int argc, char **argv, Options &opt)
{
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        if (a.size() > 1 && a[0] == '-' && a != "--")
            opt.given.push_back(mainname(a));
        // Options that take a value: --name VALUE or --name=VALUE.
        auto value = [&](const char *name, std::string &out) -> int {
            size_t n = strlen(name);
            if (a == name) {
                if (i + 1 >= argc)
                    return usage("option %s needs a value", name), -1;
                out = argv[++i];
                return 1;
            }
            if (a.compare(0, n, name) == 0 && a.size() > n && a[n] == '=') {
                out = a.substr(n + 1);
                return 1;
            }
            return 0;
        };
        int r = 0;
        std::string trace, jobs, maxerrors, form;
        if ((r = value("--servconf", opt.servconf)) || (r = value("-o", opt.output)) ||
            (r = value("--output", opt.output)) || (r = value("--reference", opt.reference)) ||
            (r = value("--message", opt.message))) {
            if (r < 0)
                return false;
        } else if ((r = value("--report", opt.report))) {
            if (r < 0)
                return false;
        } else if ((r = value("--max-errors", maxerrors))) {
            if (r < 0)
                return false;
            char *end = nullptr;
            long v = strtol(maxerrors.c_str(), &end, 10);
            if (maxerrors.empty() || *end != '\0' || v < 1)
                return usage("--max-errors takes a number from 1 on, not '%s'", maxerrors.c_str());
            opt.maxerrors = static_cast<size_t>(v);
        } else if ((r = value("--format", opt.format))) {
            if (r < 0)
                return false;
            opt.formatgiven = true;
        } else if ((r = value("--form", form))) {
            if (r < 0)
                return false;
            if (form != "compact" && form != "full")
                return usage("--form takes compact or full, not '%s'", form.c_str());
            opt.full = form == "full";
        } else if (a == "--full") {
            opt.full = true;
        } else if ((r = value("--config", opt.config))) {
            if (r < 0)
                return false;
            opt.configs.push_back(opt.config);
        } else if ((r = value("-j", jobs)) || (r = value("--jobs", jobs))) {
            if (r < 0)
                return false;
            char *end = nullptr;
            long v = strtol(jobs.c_str(), &end, 10);
            if (jobs.empty() || *end != '\0' || v < 1 || v > 256)
                return usage("-j takes a number of processes from 1 to 256, not '%s'", jobs.c_str());
            opt.jobs = static_cast<int>(v);
        } else if (a.size() > 2 && a.compare(0, 2, "-j") == 0 && isdigit(static_cast<unsigned char>(a[2]))) {
            char *end = nullptr;
            long v = strtol(a.c_str() + 2, &end, 10);
            if (*end != '\0' || v < 1 || v > 256)
                return usage("-j takes a number of processes from 1 to 256, not '%s'", a.c_str() + 2);
            opt.jobs = static_cast<int>(v);
        } else if (a == "--errors-only") {
            opt.errorsonly = true;
        } else if (a == "--validate") {
            opt.validate = true;
        } else if (a == "--raw") {
            opt.raw = true;
        } else if (a == "--verbose" || a == "-v") {
            opt.verbose = true;
        } else if (a == "--keep-going") {
            opt.keepgoing = true;
        } else if (a == "--exact") {
            opt.exact = true;
        } else if ((r = value("--sender", opt.sender))) {
            if (r < 0)
                return false;
            opt.havesender = true;
        } else if ((r = value("--recipient", opt.recipient))) {
            if (r < 0)
                return false;
            opt.haverecipient = true;
        } else if ((r = value("--trace", trace))) {
            if (r < 0)
                return false;
            char *end = nullptr;
            long v = strtol(trace.c_str(), &end, 10);
            if (trace.empty() || *end != '\0' || v < 0 || v > 15)
                return usage("--trace takes a level from 0 to 15, not '%s'", trace.c_str());
            opt.trace = static_cast<int>(v);
        } else if (a == "--test") {
            opt.test = true;
        } else if (a == "--ack-request") {
            opt.ackrequest = true;
        } else if ((r = value("--syntax", opt.syntax)) ||
                   (r = value("--application-ref", opt.applicationref)) ||
                   (r = value("--group", opt.group))) {
            if (r < 0)
                return false;
        } else if (a == "--join-lines") {
            opt.joinlines = true;
        } else if (a == "--help" || a == "-h") {
            opt.help = true;
        } else if (a == "--version") {
            opt.version = true;
        } else if (a == "--") {
            for (i++; i < argc; i++)
                opt.inputs.push_back(argv[i]);
        } else if (a.size() > 1 && a[0] == '-') {
            return usage("unknown option '%s'", a.c_str());
        } else if (opt.command.empty()) {
            opt.command = a;
        } else {
            opt.inputs.push_back(a);
        }
    }
    if (opt.help || opt.version)
        return true;
    if (opt.command.empty())
        return usage("%sno command given", "");
    if (opt.command != "read" && opt.command != "write" && opt.command != "vda-read" &&
        opt.command != "vda-write" && opt.command != "validate" && opt.command != "ack")
        return usage("unknown command '%s'", opt.command.c_str());
    if (opt.command == "validate") {
        if (opt.format != "tree" && opt.format != "text" && opt.format != "json")
            return usage("--format of validate takes text or json, not '%s'", opt.format.c_str());
    } else if (opt.command == "read") {
        if (opt.format != "tree" && opt.format != "json" && opt.format != "ndjson")
            return usage("--format takes tree, json or ndjson, not '%s'", opt.format.c_str());
    } else if (opt.format != "tree" && opt.format != "json") {
        return usage("--format takes tree or json, not '%s'", opt.format.c_str());
    }
    if (!opt.report.empty() && opt.command != "read")
        return usage("%s--report is an option of read", "");
    if (opt.maxerrors > 0 && opt.command != "validate" && opt.command != "ack" &&
        !(opt.command == "read" && opt.validate))
        return usage("%s--max-errors is an option of validate and read --validate", "");
    // Without --format, an output file named *.json gets JSON: that is what
    // anyone naming it so expects.  A folder as OUT keeps tree text.
    const std::string &out = opt.output;
    if (!opt.formatgiven && out.size() > 5 &&
        strcasecmp(out.c_str() + out.size() - 5, ".json") == 0 && !isfolder(out))
        opt.format = "json";
    if (!opt.formatgiven && opt.command == "read" && out.size() > 7 &&
        strcasecmp(out.c_str() + out.size() - 7, ".ndjson") == 0 && !isfolder(out))
        opt.format = "ndjson";
    if (opt.inputs.empty())
        return usage("%s needs an input file", opt.command.c_str());
    bool writing = opt.command == "write" || opt.command == "vda-write";
    if (writing) {
        if (opt.inputs.size() != 1)
            return usage("%s takes exactly one tree file", opt.command.c_str());
    }
    if (!opt.message.empty() && (opt.command != "write" || !opt.config.empty()))
        return usage("%s--message is an option of write without --config", "");
    if (opt.validate && opt.command != "read")
        return usage("%s--validate is an option of read", "");
    if (opt.joinlines && opt.command != "read")
        return usage("%s--join-lines is an option of read only", "");
    if (opt.jobs > 0 && writing)
        return usage("%s-j is an option of read and vda-read", "");
    if (opt.command != "write" && (opt.exact || (!opt.reference.empty() && opt.command != "ack")))
        return usage("%s--exact and --reference are options of write", "");
    if (opt.errorsonly && opt.command != "ack")
        return usage("%s--errors-only is an option of ack", "");
    if (!opt.reference.empty() && opt.reference.size() > 14)
        return usage("--reference takes at most 14 characters, not '%s'", opt.reference.c_str());
    if (opt.command == "read" && !opt.config.empty() && !opt.servconf.empty())
        return usage("%sgive either --servconf or --config, not both", "");
    if (opt.format == "ndjson" && !opt.report.empty())
        return usage("%s--report is an option of read with --format tree or json", "");
    std::string foreign = foreignoption(opt);
    if (!foreign.empty())
        return usage("%s", (foreign + " is not an option of " + opt.command).c_str());
    return true;
}

}  // namespace edi
