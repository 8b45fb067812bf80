// The shared records as C sees them, and the module loaded as a host loads it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstddef>

#include "ediprot.h"

extern "C" size_t c_layout(int which);

namespace {

TEST(Layout, CAndCxxAgreeOnTheSharedRecords)
{
    const size_t cxx[] = {
        sizeof(datatree_t), offsetof(datatree_t, data), offsetof(datatree_t, loopcnt),
        offsetof(datatree_t, iseditag), offsetof(datatree_t, editype), offsetof(datatree_t, file),
        offsetof(datatree_t, parent), offsetof(datatree_t, next), sizeof(envelope_t),
        offsetof(envelope_t, servconftag), offsetof(envelope_t, onedokpost), sizeof(servconf_t),
        offsetof(servconf_t, fromconffile), offsetof(servconf_t, next), sizeof(editype_t),
    };
    for (int i = 0; i < static_cast<int>(std::size(cxx)); i++)
        EXPECT_EQ(c_layout(i), cxx[i]) << "item " << i;
    EXPECT_EQ(sizeof(editype_t), sizeof(int));
    EXPECT_EQ(sizeof(nodetype_t), sizeof(int));
}

TEST(Layout, DatatreeFieldsFollowTheAgreedOrderOn64Bit)
{
    if (sizeof(void *) != 8)
        GTEST_SKIP() << "offsets below are those of an LP64 system";
    EXPECT_EQ(offsetof(datatree_t, xmltag), 0u);
    EXPECT_EQ(offsetof(datatree_t, data), 8u);
    EXPECT_EQ(offsetof(datatree_t, loopcnt), 16u);
    EXPECT_EQ(offsetof(datatree_t, defval), 24u);
    EXPECT_EQ(offsetof(datatree_t, deffunc), 32u);
    EXPECT_EQ(offsetof(datatree_t, iseditag), 40u);
    EXPECT_EQ(offsetof(datatree_t, type), 44u);
    EXPECT_EQ(offsetof(datatree_t, edidata), 48u);
    EXPECT_EQ(offsetof(datatree_t, edilen), 52u);
    EXPECT_EQ(offsetof(datatree_t, edimaxlen), 56u);
    EXPECT_EQ(offsetof(datatree_t, editype), 60u);
    EXPECT_EQ(offsetof(datatree_t, ediforce), 64u);
    EXPECT_EQ(offsetof(datatree_t, edialign), 68u);
    EXPECT_EQ(offsetof(datatree_t, valid), 72u);
    EXPECT_EQ(offsetof(datatree_t, line), 76u);
    EXPECT_EQ(offsetof(datatree_t, file), 80u);
    EXPECT_EQ(offsetof(datatree_t, parent), 88u);
    EXPECT_EQ(offsetof(datatree_t, child), 96u);
    EXPECT_EQ(offsetof(datatree_t, next), 104u);
}

TEST(Module, LoadsIntoAHostAndShowsItsInitialState)
{
    void *h = dlopen(EDIPROT_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(h, nullptr) << dlerror();
    const char *names[] = {"seg_sep", "dst_sep", "cmp_sep", "float_sep", "escape"};
    const char defaults[] = {'\'', '+', ':', '.', '?'};
    for (int i = 0; i < 5; i++) {
        auto *cp = static_cast<char *>(dlsym(h, names[i]));
        ASSERT_NE(cp, nullptr) << names[i];
        EXPECT_EQ(*cp, defaults[i]) << names[i];
    }
    auto **csb = static_cast<char **>(dlsym(h, "charsetB"));
    auto **csa = static_cast<char **>(dlsym(h, "charsetA"));
    ASSERT_NE(csb, nullptr);
    ASSERT_NE(csa, nullptr);
    EXPECT_EQ(strlen(*csb), 128u);
    EXPECT_EQ((*csb)['a'], 'a');
    EXPECT_EQ((*csa)['a'], 'A');
    EXPECT_EQ((*csb)['@'], ' ');
    EXPECT_EQ((*csb)['$'], ' ');
    EXPECT_EQ((*csb)['\\'], ' ');
    EXPECT_EQ((*csb)['~'], ' ');
    EXPECT_EQ((*csb)['%'], '%');
    EXPECT_EQ(dlsym(h, "searchlooppath"), nullptr) << "internal symbol exported";
    EXPECT_EQ(dlsym(h, "tagcnt"), nullptr) << "internal symbol exported";
    dlclose(h);
}

}  // namespace
