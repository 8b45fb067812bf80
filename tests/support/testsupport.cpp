#include "testsupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "edihost.h"

namespace testsupport {

datatree_t *adopt(datatree_t *parent, std::initializer_list<datatree_t *> kids)
{
    datatree_t **tpp = &parent->child;
    while (*tpp != nullptr)
        tpp = &(*tpp)->next;
    for (datatree_t *kid : kids) {
        *tpp = kid;
        tpp = &kid->next;
    }
    return parent;
}

datatree_t *node(const char *name, const char *data,
                 std::initializer_list<datatree_t *> kids)
{
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    tp->xmltag = strdup(name);
    tp->data = data != nullptr ? strdup(data) : nullptr;
    return adopt(tp, kids);
}

datatree_t *loopnode(const char *name, int loopcnt,
                     std::initializer_list<datatree_t *> kids)
{
    datatree_t *tp = node(name, nullptr, kids);
    tp->loopcnt = loopcnt;
    return tp;
}

datatree_t *rooted(datatree_t *root)
{
    setparents(root, 0);
    return root;
}

datatree_t *parse(const std::string &text)
{
    datatree_t *tree = edihost_parsetree(text.data(), text.size(), "test");
    EXPECT_NE(tree, nullptr) << "tree text did not parse:\n" << text;
    return tree;
}

std::string dump(const datatree_t *tree)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    edihost_writetree(fp, tree);
    fclose(fp);
    std::string out(buf, len);
    free(buf);
    return out;
}

namespace {
struct TempRoot {
    std::string path;
    ~TempRoot()
    {
        if (!path.empty()) {
            std::error_code ec;
            std::filesystem::remove_all(path, ec);
        }
    }
};
TempRoot temproot;
}  // namespace

std::string tempdir()
{
    if (temproot.path.empty()) {
        std::string tmpl = (std::filesystem::temp_directory_path() / "ediprot-test-XXXXXX").string();
        char *made = mkdtemp(tmpl.data());
        EXPECT_NE(made, nullptr);
        temproot.path = tmpl;
    }
    static int count = 0;
    std::string dir = temproot.path + "/" + std::to_string(++count);
    mkdir(dir.c_str(), 0700);
    return dir;
}

std::string writefile(const std::string &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string readfile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool exists(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

std::string messagesegments(const std::string &text)
{
    size_t unb = text.find("UNB+");
    size_t start = text.find('\'', unb);
    size_t unz = text.rfind("UNZ+");
    if (unb == std::string::npos || start == std::string::npos || unz == std::string::npos ||
        unz < start)
        return "<no interchange>";
    return text.substr(start + 1, unz - start - 1);
}

std::string capture_stderr(const std::function<void()> &fn)
{
    fflush(stderr);
    testing::internal::CaptureStderr();
    fn();
    fflush(stderr);
    return testing::internal::GetCapturedStderr();
}

}  // namespace testsupport
