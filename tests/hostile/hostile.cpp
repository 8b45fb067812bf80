#include "hostile.h"

#include <stdlib.h>

#include <random>
#include <vector>

#include "internal.h"
#include "testsupport.h"

namespace hostile {

const char *const kMessageConfig =
    "edi\n"
    "  *MSG\n"
    "    $UNH iseditag=1 ediforce=mand\n"
    "      0062 edimaxlen=14\n"
    "      S009\n"
    "        0065 edimaxlen=6\n"
    "        0052 edimaxlen=3\n"
    "    $FTX iseditag=1\n"
    "      4451 edimaxlen=3\n"
    "      4453 edimaxlen=3\n"
    "      C108\n"
    "        4440 edimaxlen=8191\n"
    "    $UNT iseditag=1\n"
    "      0074 edimaxlen=6\n"
    "      0062 edimaxlen=14\n";

const char *const kInterchange =
    "UNB+UNOA:3+SENDER:14+RECIP:14+071123:1015+REF1'"
    "UNH+1+ORDERS:D:96A:UN'"
    "FTX+AAI++TEXT'"
    "UNT+3+1'"
    "UNZ+1+REF1'";

std::string noise(unsigned seed, size_t n)
{
    // mt19937 yields the same sequence on every platform and library.
    std::mt19937 gen(seed);
    std::string out(n, '\0');
    for (char &c : out)
        c = static_cast<char>(gen() & 0xff);
    return out;
}

std::string withname(std::string text, const std::string &fn)
{
    for (size_t pos; (pos = text.find("{F}")) != std::string::npos;)
        text.replace(pos, 3, fn);
    return text;
}

ReadResult::~ReadResult()
{
    if (tree != nullptr)
        freedatatree(tree);
    if (ev != nullptr) {
        free(ev->servconftag);
        free(ev);
    }
}

std::string ReadResult::at(const char *path, const char *loop) const
{
    if (tree == nullptr)
        return "(none)";
    datatree_t *tp = ediprot::searchlooppath(path, loop, tree);
    return tp != nullptr && tp->data != nullptr ? tp->data : "(none)";
}

void readedifact(ReadResult &r, const std::string &fn, datatree_t *inhead)
{
    r.err = testsupport::capture_stderr([&] {
        r.tree = edifactread(const_cast<char *>(fn.c_str()), &r.ev, inhead, nullptr);
    });
}

void readvda(ReadResult &r, const std::string &fn, datatree_t *inhead)
{
    r.err = testsupport::capture_stderr([&] {
        r.tree = vdaread(const_cast<char *>(fn.c_str()), nullptr, inhead, nullptr);
    });
}

size_t countnodes(const datatree_t *tp)
{
    // An explicit stack: the trees of these tests may be very deep.
    size_t n = 0;
    std::vector<const datatree_t *> stack;
    if (tp != nullptr)
        stack.push_back(tp);
    while (!stack.empty()) {
        const datatree_t *np = stack.back();
        stack.pop_back();
        n++;
        if (np->next != nullptr)
            stack.push_back(np->next);
        if (np->child != nullptr)
            stack.push_back(np->child);
    }
    return n;
}

}  // namespace hostile
