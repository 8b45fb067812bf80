// The tree services of the host layer: release, parent links, paths,
// parameter copies and dumps.
#include <gtest/gtest.h>
#include <malloc.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "edihost.h"
#include "testsupport.h"

using testsupport::adopt;
using testsupport::capture_stderr;
using testsupport::dump;
using testsupport::node;

// Whether a sanitizer's allocator serves malloc and free.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZER_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define SANITIZER_ALLOCATOR 1
#endif
#endif

// released(fn): the bytes that the allocator takes back while fn runs.
// A sanitizer's allocator counts its allocated bytes itself; glibc's does
// not, so there free is interposed and adds up the usable size of every
// block it is given (the test program links no other allocator).
#ifdef SANITIZER_ALLOCATOR
// The sanitizer runtime's own (its header is not always installed).
extern "C" size_t __sanitizer_get_current_allocated_bytes(void);

namespace {
template <class F>
size_t released(F fn)
{
    const size_t before = __sanitizer_get_current_allocated_bytes();
    fn();
    return before - __sanitizer_get_current_allocated_bytes();
}
}  // namespace
#else
extern "C" void __libc_free(void *);

namespace {
bool counting = false;
size_t freedbytes = 0;

template <class F>
size_t released(F fn)
{
    freedbytes = 0;
    counting = true;
    fn();
    counting = false;
    return freedbytes;
}
}  // namespace

extern "C" void free(void *p) noexcept
{
    if (counting && p != nullptr)
        freedbytes += malloc_usable_size(p);
    __libc_free(p);
}
#endif

namespace {
// What a node and its texts hold of the allocator.
size_t blockbytes(datatree_t *tp)
{
    size_t n = malloc_usable_size(tp) + malloc_usable_size(tp->xmltag);
    if (tp->data != nullptr)
        n += malloc_usable_size(tp->data);
    return n;
}
}  // namespace

TEST(Freedatatree, ReleasesAChainOfAMillionSiblings)
{
    datatree_t *head = nullptr;
    size_t bytes = 0;
    for (int i = 0; i < 1000000; i++) {
        datatree_t *tp = node("n", "v");
        bytes += blockbytes(tp);
        tp->next = head;
        head = tp;
    }
    ASSERT_GE(bytes, 1000000 * sizeof(datatree_t));
    EXPECT_EQ(released([&] { freedatatree(head); }), bytes);
}

TEST(Freedatatree, ReleasesAChainAMillionLevelsDeep)
{
    datatree_t *root = node("n", "v");
    size_t bytes = blockbytes(root);
    datatree_t *tp = root;
    for (int i = 0; i < 1000000; i++) {
        tp->child = node("n");
        tp = tp->child;
        bytes += blockbytes(tp);
    }
    ASSERT_GE(bytes, 1000000 * sizeof(datatree_t));
    EXPECT_EQ(released([&] { freedatatree(root); }), bytes);
}

TEST(Pathfornode, JoinsTheNamesFromTheRootAsFarAsParentLinksGo)
{
    datatree_t *root = testsupport::rooted(
        node("edi", nullptr, {node("ORDERS", nullptr, {node("$UNH", nullptr, {node("S009", nullptr, {node("0065")})})})}));
    EXPECT_STREQ(pathfornode(root, 0), "edi");
    datatree_t *deep = root->child->child->child->child;
    EXPECT_STREQ(pathfornode(deep, 0), "edi.ORDERS.$UNH.S009.0065");

    // A fresh loop copy: its own parent is still NULL, its child points to it.
    datatree_t *copy = node("*PARTY", nullptr, {node("$NAD")});
    copy->child->parent = copy;
    EXPECT_STREQ(pathfornode(copy->child, 0), "*PARTY.$NAD");
    EXPECT_EQ(pathfornode(nullptr, 0), nullptr);

    // A path longer than any fixed buffer of the module.
    std::string longname(10000, 'x');
    datatree_t *longnode = node(longname.c_str());
    longnode->parent = deep;
    EXPECT_EQ(std::string(pathfornode(longnode, 0)), "edi.ORDERS.$UNH.S009.0065." + longname);
    freedatatree(longnode);
    freedatatree(copy);
    freedatatree(root);
}

TEST(Copynodeparms, CopiesTheParametersButNeitherValueNorLinks)
{
    const char *params = " loopcnt=3 defval=dv deffunc=unhcnt iseditag=1 type=loop edidata=opt"
                         " edilen=5 edimaxlen=35 editype=sdate ediforce=mand edialign=left valid=1";
    datatree_t *src = testsupport::parse(std::string("$NAD data=value") + params +
                                         "\n  kid\nsibling\n");
    ASSERT_NE(src, nullptr);
    datatree_t *dst = node("copy");
    char *tag = dst->xmltag;

    copynodeparms(dst, src, 1);
    EXPECT_EQ(dst->xmltag, tag);
    EXPECT_EQ(dst->parent, nullptr);
    // No data, no child, no next: the dump is this one line.
    EXPECT_EQ(dump(dst), std::string("copy") + params + "\n");
    EXPECT_EQ(dst->line, 1);
    // Own copies of the strings, so that the source can go first.
    EXPECT_NE(dst->defval, src->defval);
    EXPECT_NE(dst->deffunc, src->deffunc);
    EXPECT_EQ(dst->file, src->file) << "one shared file name";
    freedatatree(src);
    EXPECT_STREQ(dst->defval, "dv");
    EXPECT_STREQ(dst->deffunc, "unhcnt");
    EXPECT_STREQ(dst->file, "test");
    freedatatree(dst);
}

