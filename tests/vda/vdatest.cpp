#include "vdatest.h"

#include <gtest/gtest.h>

#include "edihost.h"

using namespace testsupport;

namespace vdatest {

datatree_t *field(const char *name, int len, editype_t type, ediforce_t force)
{
    datatree_t *tp = node(name);
    tp->edilen = len;
    tp->editype = type;
    tp->ediforce = force;
    return tp;
}

std::string children(const datatree_t *tp)
{
    std::string out;
    for (const datatree_t *cp = tp->child; cp != nullptr; cp = cp->next) {
        if (!out.empty())
            out += ' ';
        out += cp->xmltag;
        if (cp->xmltag[0] == '*')
            out += "(" + std::to_string(cp->loopcnt) + ")";
    }
    return out;
}

std::vector<std::string> crlflines(const std::string &text)
{
    std::vector<std::string> lines;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find("\r\n", pos);
        if (end == std::string::npos) {
            ADD_FAILURE() << "line without CR LF: " << text.substr(pos);
            break;
        }
        lines.push_back(text.substr(pos, end - pos));
        pos = end + 2;
    }
    return lines;
}

std::string trailer(std::initializer_list<int> counts)
{
    std::string out = "51902";
    for (int c : counts) {
        std::string num = std::to_string(c);
        out += std::string(num.size() < 7 ? 7 - num.size() : 0, '0') + num;
    }
    return out + std::string(67, ' ');
}

std::string tempfile(const std::string &bytes, const std::string &name)
{
    return writefile(tempdir() + "/" + name, bytes);
}

datatree_t *loadconfig(const std::string &name)
{
    std::string fn = std::string(EDIPROT_CONFIGS) + "/" + name;
    datatree_t *cf = readconfig(fn.data(), 0, const_cast<char *>("test"), __LINE__);
    EXPECT_NE(cf, nullptr) << "configuration " << fn << " did not load";
    return cf;
}

datatree_t *read(const std::string &fn, datatree_t *cf, std::string *err)
{
    datatree_t *tree = nullptr;
    std::string e = capture_stderr(
        [&] { tree = vdaread(const_cast<char *>(fn.c_str()), nullptr, cf, nullptr); });
    if (err != nullptr)
        *err = e;
    return tree;
}

std::string write(datatree_t *tree, datatree_t *cf, int *rc, std::string *err)
{
    std::string fn = tempdir() + "/out.vda";
    int r = 0;
    std::string e = capture_stderr([&] {
        r = vdawrite(tree, fn.data(), nullptr, nullptr, cf, nullptr, nullptr, 0);
    });
    if (rc != nullptr)
        *rc = r;
    if (err != nullptr)
        *err = e;
    return readfile(fn);
}

}  // namespace vdatest
