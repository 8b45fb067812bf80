// Trees parsed into reserved memory: the same trees as without, freed by
// freedatatree whatever mix of reserved and malloc'ed memory they hold,
// and the reservation given back once its last node is freed.  Under the
// address sanitizer a reserved node or text passed to free() is an error,
// and a malloc'ed one never freed is a leak.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "edihost.h"
#include "testsupport.h"

using testsupport::capture_stderr;
using testsupport::sametree;

namespace {

// Plain lines, quoted ones (read by the full reader) and every field.
std::string sampletext(int items)
{
    std::string text = "edi\n  *ORDERS loopcnt=1\n";
    for (int i = 1; i <= items; i++) {
        text += "    *SG25 loopcnt=" + std::to_string(i) + "\n";
        text += "      $LIN iseditag=1\n        1082 data=" + std::to_string(i) + "\n";
        text += "        \"C 212\" data=\"a b\\x01\"\n";
        text += "        7140 defval=x deffunc=f type=loop edidata=opt edilen=35 editype=float "
                "ediforce=mand edialign=right valid=-3\n";
    }
    return text;
}

bool mapped(const void *p)
{
    const long page = sysconf(_SC_PAGESIZE);
    void *start = reinterpret_cast<void *>(reinterpret_cast<uintptr_t>(p) & ~uintptr_t(page - 1));
    unsigned char in;
    return mincore(start, 1, &in) == 0;
}

}  // namespace

TEST(NodeStore, TreesAreTheSameWhenTheReservationEndsAnywhere)
{
    const std::string text = sampletext(50);
    datatree_t *plain = edihost_parsetree(text.data(), text.size(), "t");
    ASSERT_NE(plain, nullptr);
    // None, full after a few nodes, full in the middle, room to spare.
    for (size_t bytes : {size_t{0}, size_t{200}, size_t{9000}, size_t{1} << 20}) {
        ASSERT_EQ(edihost_reservenodes(bytes), 0);
        datatree_t *stored = edihost_parsetree(text.data(), text.size(), "t");
        ASSERT_NE(stored, nullptr);
        EXPECT_TRUE(sametree(plain, stored)) << bytes;
        // A host may give a node a value of its own.
        free(stored->child->data);
        stored->child->data = strdup("own");
        freedatatree(stored);
    }
    edihost_reservenodes(0);
    freedatatree(plain);
}

TEST(NodeStore, AFaultAfterManyNodesGivesTheMessageAndFreesThem)
{
    const std::string text = sampletext(20) + "  \tbad\n";
    ASSERT_EQ(edihost_reservenodes(1 << 20), 0);
    datatree_t *tree = nullptr;
    std::string err = capture_stderr([&] { tree = edihost_parsetree(text.data(), text.size(), "t"); });
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(err, "t:" + std::to_string(2 + 20 * 5 + 1) + ": tab in indentation\n");
    edihost_reservenodes(0);
}

TEST(NodeStore, TheMemoryGoesBackWithTheLastNodeOnceTheReservationEnds)
{
    const std::string text = sampletext(3);
    // Freed first, then the reservation ended.
    ASSERT_EQ(edihost_reservenodes(1 << 20), 0);
    datatree_t *tree = edihost_parsetree(text.data(), text.size(), "t");
    ASSERT_NE(tree, nullptr);
    const void *at = tree;
    freedatatree(tree);
    EXPECT_TRUE(mapped(at));
    edihost_reservenodes(0);
    EXPECT_FALSE(mapped(at));

    // The reservation ended first, then the tree freed.
    ASSERT_EQ(edihost_reservenodes(1 << 20), 0);
    tree = edihost_parsetree(text.data(), text.size(), "t");
    ASSERT_NE(tree, nullptr);
    at = tree;
    edihost_reservenodes(0);
    EXPECT_TRUE(mapped(at));
    freedatatree(tree);
    EXPECT_FALSE(mapped(at));
}

TEST(NodeStore, AThreadThatEndsEndsItsReservation)
{
    const std::string text = sampletext(3);
    datatree_t *tree = nullptr;
    std::thread([&] {
        ASSERT_EQ(edihost_reservenodes(1 << 20), 0);
        tree = edihost_parsetree(text.data(), text.size(), "t");
    }).join();
    ASSERT_NE(tree, nullptr);
    const void *at = tree;
    EXPECT_TRUE(mapped(at));
    freedatatree(tree);
    EXPECT_FALSE(mapped(at));
}
