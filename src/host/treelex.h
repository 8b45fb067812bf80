// The lexical layer of the tree text format, shared by the tree parser and
// the service-configuration loader: tokens (bare or quoted with escapes),
// the line grammar "NAME key=value ...", lines of a text, and messages.
#ifndef EDIHOST_TREELEX_H
#define EDIHOST_TREELEX_H

#include <string>
#include <vector>

namespace edihost {

// A byte that may stand in a bare token: printable ASCII except blank,
// '"' and '='.
inline bool isbare(unsigned char c)
{
    return c > 0x20 && c < 0x7f && c != '"' && c != '=';
}

// The blanks between the tokens of a line.
inline bool isblankbyte(char c)
{
    return c == ' ' || c == '\t';
}

// Reads [cp, end) as a decimal int with an optional sign.
enum class decimal { ok, bad, outofrange };
decimal readdecimal(const char *cp, const char *end, int &value);

// Appends `s` as one token: bare when it reads back unchanged, otherwise
// in double quotes with escapes.  `isname`: the token starts a line, where
// a leading '#' would make a comment.
void appendtoken(std::string &out, const char *s, bool isname);

// Splits a text into lines at '\n'; a '\r' at the end of a line belongs to
// the line end (files saved with CR LF).  A last line without '\n' counts.
struct textlines {
    const char *cp;
    const char *end;
    int lineno = 0;
    // The next line in [lb, le); false at the end of the text.
    bool next(const char *&lb, const char *&le);
};

// A line under scan.  Functions that fail set `reason` and return false.
struct linescan {
    const char *cp;
    const char *end;
    std::string reason;

    bool atend() const { return cp == end; }
    bool atblank() const { return cp != end && isblankbyte(*cp); }
    void skipblanks();
    bool fail(std::string why);
};

struct entryfield {
    std::string key;
    std::string value;
};

// Reads "NAME key=value key=value ..." up to the end of the line (the
// scan stands on the first byte of the name).
bool readentry(linescan &ls, std::string &name, std::vector<entryfield> &fields);

// The value of `ef` as a decimal int with an optional sign; fails with
// "bad number for KEY: VALUE" or "number out of range for KEY: VALUE".
bool readint(linescan &ls, const entryfield &ef, int &value);

// Reads the whole file; on failure writes "FN: <reason of the system>".
bool slurpfile(const char *fn, std::string &out);

// A malloc'ed copy of s (aborts when memory runs out).
char *newcopy(const std::string &s);

// Writes "NAME:LINE: reason" to stderr.
void reportline(const char *name, int line, const std::string &reason);

// "byte 0xHH" for messages.
std::string bytename(unsigned char c);

}  // namespace edihost

#endif
