// Segments in minimal form: only trailing empties go, whatever the service
// characters and release characters.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "text/minimal.h"

namespace {

TEST(MinimalForm, TrailingEmptiesGoAndNothingElse)
{
    struct Case {
        const char *in, *out;
        size_t changed;
    } cases[] = {
        {"BGM+220:::+PO-1+9'", "BGM+220+PO-1+9'", 1},
        {"FTX+PUR+1+::+A:B'", "FTX+PUR+1++A:B'", 1},
        {"TAX+7+VAT+++:::6+S'", "TAX+7+VAT+++:::6+S'", 0},   // empties in front stay
        {"NAD+BY+123::9++++'", "NAD+BY+123::9'", 1},          // trailing elements
        {"FTX+AAI+++A?+B?" "?:C?" "?:'", "FTX+AAI+++A?+B?" "?:C?" "?'", 1}, // released ones stay
        {"FTX+AAI+++A?:'", "FTX+AAI+++A?:'", 0},               // a released separator is text
        {"UNA:+.? 'UNB+UNOB:2+A:14+B:14::+1'", "UNA:+.? 'UNB+UNOB:2+A:14+B:14+1'", 1},
        {"UNA*#.! 'BGM#220***#1'", "UNA*#.! 'BGM#220#1'", 1},  // the UNA's own characters
        {"BGM'", "BGM'", 0},
        {"BGM+220", "BGM+220", 0},                             // no terminator: as it is
    };
    for (const Case &c : cases) {
        size_t n = 99;
        EXPECT_EQ(edi::minimalform(c.in, n), c.out) << c.in;
        EXPECT_EQ(n, c.changed) << c.in;
    }
}

// The one pass over a segment's bytes against the segment cut into lists
// of elements and components, on seeded random segments over few
// characters: service characters, release runs, empties anywhere, UNAs
// that change them (some letting two of them coincide), a last piece
// without terminator.
TEST(MinimalForm, OnePassShapesAsTheListsDo)
{
    std::mt19937 rng(7);
    const char alphabet[] = "AB:+?'*#!";
    for (int c = 0; c < 20000; c++) {
        std::string text;
        if (rng() % 4 == 0) {
            // Service characters from the alphabet, at times two alike.
            std::string una = "UNA";
            for (int k = 0; k < 6; k++)
                una += alphabet[rng() % (sizeof alphabet - 1)];
            text += una;
        }
        for (unsigned len = rng() % 40; len > 0; len--)
            text += alphabet[rng() % (sizeof alphabet - 1)];
        size_t fast = 0, plain = 0;
        std::string a = edi::minimalform(text, fast);
        std::string b = edi::minimalform(text, plain, true);
        ASSERT_EQ(a, b) << text;
        ASSERT_EQ(fast, plain) << text;
    }
}

}  // namespace
