// edi: converts EDIFACT interchanges and VDA record files to trees (tree
// text or JSON) and back, through libedi.
#include <stdio.h>

#include <string>

#include "allocator.h"
#include "commands.h"
#include "configcmd.h"
#include "options.h"

#ifndef EDIPROT_VERSION
#define EDIPROT_VERSION "unknown"
#endif

int main(int argc, char **argv)
{
    edi::tuneallocator();
    // edi config needs neither the module nor the options of read and write.
    if (argc > 1 && std::string(argv[1]) == "config")
        return edi::configcommand(argc, argv);
    edi::Options opt;
    if (!edi::parseoptions(argc, argv, opt))
        return edi::exit_usage;
    if (opt.help) {
        fputs(edi::helptext(opt.command), stdout);
        return edi::exit_ok;
    }
    if (opt.version) {
        printf("edi %s\n", EDIPROT_VERSION);
        return edi::exit_ok;
    }
    if (opt.command == "validate")
        return edi::validatecommand(opt);
    if (opt.command == "ack")
        return edi::ackcommand(opt);
    if (opt.command == "read" || opt.command == "vda-read")
        return edi::readcommand(opt);
    return edi::writecommand(opt);
}
