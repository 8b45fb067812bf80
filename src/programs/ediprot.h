/*
 * ediprot.h - public interface of the ediprot protocol module.
 *
 * ediprot turns UN/EDIFACT interchanges and VDA fixed-width record files
 * into trees of named nodes (datatree_t), and such trees back into files.
 * The layout of a document comes from a configuration tree; the module
 * knows only the syntax of the two formats.
 *
 * This header is valid C (C99 and later) and C++.  It has five sections:
 *   1. enumerations        2. shared records        3. module variables
 *   4. entry points        5. host services that a host program must provide
 *
 * General rules
 *   - The module is not re-entrant: one call at a time, on the caller's
 *     thread.  Separators, counters and result buffers are process-wide
 *     state that carries over from one call to the next.
 *   - Messages go to stderr as plain lines without prefix; trace lines
 *     (controlled by the top four bits of `tracelevel`) carry the prefix
 *     "HH:MM:SS.mmm (ediprot       :LINE): ".
 *   - Nodes are allocated with malloc and zero-filled; their strings come
 *     from the host's strsav/msprintf; freedatatree of the host releases both.
 */
#ifndef EDIPROT_H
#define EDIPROT_H

#include <stdio.h>

#if defined(EDIPROT_BUILDING)
#define EDIPROT_API __attribute__((visibility("default")))
#else
#define EDIPROT_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * 1. Enumerations.  Each is stored as an int in the records below.
 * --------------------------------------------------------------------- */

/* Value type of an element: selects the conversion between file form and
 * tree form.  Only et_date, et_sdate and et_float0 have a conversion of
 * their own. */
typedef enum {
    et_none = 0,
    et_string = 1,
    et_float = 2,
    et_date = 3,   /* file YYYYMMDD, tree YYYY-MM-DD */
    et_sdate = 4,  /* file YYMMDD,   tree DD.MM.20YY */
    et_float0 = 5, /* file zero-filled number, tree without leading zeros */
    et_time = 6
} editype_t;

/* Whether a value written for this element makes its segment worth keeping. */
typedef enum { ed_user = 0, ed_opt = 1 } edidata_t;

/* Whether the node must be present.  ef_cond behaves as ef_none. */
typedef enum { ef_none = 0, ef_mand = 1, ef_cond = 2 } ediforce_t;

/* Alignment of a value: carried, not acted on. */
typedef enum { el_none = 0, el_left = 1, el_right = 2 } edialign_t;

/* Node type for the host's own use; the module gives it no meaning. */
typedef enum {
    nt_none = 0,
    nt_loop = 1,
    nt_next = 2,
    nt_bnext = 3,
    nt_nc = 4,
    nt_ncforeign = 5
} nodetype_t;

/* ------------------------------------------------------------------------
 * 2. Shared records.  Field order and types are part of the binary
 *    interface with the host program: never reorder them.
 * --------------------------------------------------------------------- */

/* One node of any tree: configuration, data, or the reader's flat chain.
 * The first character of xmltag tells the kind: '$' tag node (segment or
 * record), '*' loop node, anything else a plain node. */
typedef struct datatree {
    char *xmltag;            /* name, never NULL */
    char *data;              /* value; NULL = no value, "" is a value */
    int loopcnt;             /* number of a loop node, from 1 */
    char *defval;            /* default text (configuration) */
    char *deffunc;           /* default function name (configuration) */
    int iseditag;            /* non-zero: node takes a segment / is a field */
    nodetype_t type;         /* host's own; unused by the module */
    edidata_t edidata;       /* ed_user: a value here keeps the segment */
    int edilen;              /* fixed width of the value */
    int edimaxlen;           /* greatest length of the value */
    editype_t editype;       /* value type */
    ediforce_t ediforce;     /* ef_mand: must be present */
    edialign_t edialign;     /* carried, not acted on */
    int valid;               /* host's own; unused by the module */
    int line;                /* line of the configuration file */
    char *file;              /* name of the configuration file, or NULL;
                              * owned by the host and shared between nodes:
                              * copynodeparms copies the pointer and
                              * freedatatree does not free it */
    struct datatree *parent; /* node above; NULL at a root */
    struct datatree *child;  /* first node of the chain below */
    struct datatree *next;   /* next node of the same chain */
} datatree_t;

/* What edifactread hands back beside the tree.  The module sets only
 * servconftag (doctype "_" sender); everything else stays 0 / NULL. */
typedef struct envelope {
    char *host;
    int port;
    char *user;
    char *pass;
    char *conf;
    char *mandant;
    char *servconftag;
    int postaction;
    int onedokpost;
} envelope_t;

/* One entry of the host's list of service configurations (getservconf).
 * The module reads fromconffile only, and never creates or frees one. */
typedef struct servconf {
    char *tag;
    char *toconffile;
    char *fromconffile;
    char *transconffile;
    int postaction;
    int onedokpost;
    int commitall;
    struct servconf *next;
} servconf_t;

/* ------------------------------------------------------------------------
 * 3. Module variables.
 * --------------------------------------------------------------------- */

/* EDIFACT service characters.  Defaults ' + : . ?.  edifactread sets all
 * five from the file's UNA (or to the defaults) at the start of each file;
 * edifactwrite resets seg_sep, dst_sep, cmp_sep and escape to the defaults.
 * The VDA path uses them as they stand (release characters on output). */
EDIPROT_API extern char seg_sep;   /* segment terminator, default '\'' */
EDIPROT_API extern char dst_sep;   /* data element separator, default '+' */
EDIPROT_API extern char cmp_sep;   /* component separator, default ':' */
EDIPROT_API extern char float_sep; /* decimal mark, default '.' */
EDIPROT_API extern char escape;    /* release character, default '?' */

/* Character tables of 128 entries (indexed by code 0..127) plus a NUL.
 * charsetB maps every character of a written value: control characters,
 * '$', '@', '[' .. '`' and '{' .. DEL become blanks.  charsetA is the same
 * table with lower-case letters turned into upper case; the module itself
 * never reads it.  Neither is ever written by the module. */
EDIPROT_API extern char *charsetA;
EDIPROT_API extern char *charsetB;

/* ------------------------------------------------------------------------
 * 4. Entry points.
 * --------------------------------------------------------------------- */

/* edifactread - read one EDIFACT interchange into a data tree.
 *
 *   fn      file name to read (opened with tmpfopen(fn, "r")).
 *   evpp    must not be NULL.  On success receives a new envelope owned by
 *           the caller (free servconftag and the envelope with free());
 *           on failure *evpp is left untouched.
 *   inhead  configuration tree to fill, owned by the caller and not
 *           changed; NULL to choose the configuration from the file: the
 *           key doctype_sender (document type from the first UNH, sender
 *           from the first UNB) is looked up with getservconf and its
 *           fromconffile read with readconfig.  With inhead the key is
 *           formed from the same two places, and no lookup follows.
 *   sc      not read.
 *
 * Result: a new tree owned by the caller (release with freedatatree), a
 * root "edi" with one filled copy of the configuration per message; NULL
 * on failure.  The key lands in (*evpp)->servconftag.  Loop nodes that got
 * no data are removed; the others carry in loopcnt the numbers under which
 * edifactwrite, given the same configuration, looks for them.
 *
 * Messages on stderr (each ends the call with NULL unless noted):
 *   perror(fn)                          file cannot be opened
 *   "%s is not an edi-file\n"           shorter than 9 bytes, or neither
 *                                       UNA nor UNB at the start
 *   "%s: segment longer than %d characters\n"
 *                                       a segment overflows the segment
 *                                       buffer (8191 characters before
 *                                       its terminator)
 *   "%s: segment terminator 0x%02x out of range\n"
 *                                       a UNA sets a terminator >= 0x80
 *   searchtagval's line, "%d: no sender\n" / "%d: no doctype\n"
 *   "config <%s> not found\n"           no service configuration for key
 *   "readconfig <%s> failed\n"          configuration file unreadable
 *   "edifactread: copysubtree failed\n" configuration root has no child
 *   "mandatory tag <%s> not found\n"    (not a failure of the call) a
 *                                       mandatory segment is missing at the
 *                                       end of a message's input
 *   "edifactread failed\n"              trace line of level 0 (shown when
 *                                       the top bits of tracelevel are not
 *                                       0) that closes every failure.
 */
EDIPROT_API datatree_t *edifactread(char *fn, envelope_t **evpp,
                                    datatree_t *inhead, servconf_t *sc);

/* edifactwrite - write a data tree as one EDIFACT interchange.
 *
 *   tree       data tree (may be NULL: only defaults are written).
 *   outfile    output file name; opened with tmpfopen(outfile, "w").  The
 *              stream must be seekable: segments are taken back in place.
 *   enc, ev    not read; may be NULL.
 *   outcf      configuration tree of the output format (may be NULL).
 *   sender,    identifications for UNB; must be writable: texts longer than
 *   recipient  35 characters are cut to 35 in place.
 *   editest    non-zero: UNB carries the test indicator.
 *
 * Writes "UNA:+.? '", UNB (local date YYMMDD and time HHMM, reference
 * 4711), the segments of outcf with values from tree, and
 * "UNZ+000001+4711'"; the file ends exactly at that terminator.  Resets
 * nunhcnt, errcnt and seg_sep, dst_sep, cmp_sep, escape (to their
 * defaults; float_sep is left alone).  Not re-entrant.
 *
 * Result: 0 when the file was written whole and kept; -1 otherwise, and
 * then no file of that name exists (a file from before is removed too;
 * with a NULL outfile nothing is touched).
 *
 * Messages on stderr: "output file name missing\n" (outfile NULL),
 * "sender or recipient missing\n", perror(outfile),
 * "%s (%d): mandatory element <%s> missing\n" for each missing mandatory
 * element followed by "editraverse failed, rc %d\n", and
 * "%s: write failed\n" with outfile when a write, the flush, the cut at
 * the end or the close failed (e.g. a full disk).
 */
EDIPROT_API int edifactwrite(datatree_t *tree, char *outfile, char *enc,
                             char *ev, datatree_t *outcf, char *sender,
                             char *recipient, int editest);

/* vdaread - read one VDA record file into a data tree.
 *
 *   fn      file name to read (opened with tmpfopen(fn, "r")).
 *   evpp    neither read nor written.
 *   inhead  configuration tree, owned by the caller; each record type has a
 *           tag node "$Snnn" whose children are the fields (edilen set).
 *   sc      not read.
 *
 * Result: a new tree owned by the caller (release with freedatatree), or
 * NULL when the configuration has no S511 record, fn is NULL or the file
 * cannot be opened.  Lines of unknown record type are skipped.  A line
 * ends at its LF (a CR before it comes off too); a field that lies behind
 * the end of its line gets the empty value.
 *
 * Records are placed by the path of their configuration node.  A record
 * that finds no place is released and reading goes on, with one of:
 *   "insrecord: no path\n"       a record of that type already stands
 *                                there, or the path ends in no tag node
 *   "insrecord: path element longer than 63 characters in <%s>\n"
 *   "insrecord: more than 10 loops in path <%s>\n"
 * Other messages on stderr: "S511 missing in vdaconf\n", "vdaread: no
 * file name\n", perror(fn), and the dumps of printdata (which our host
 * layer writes only when tracelevel is not 0).
 */
EDIPROT_API datatree_t *vdaread(char *fn, envelope_t **evpp,
                                datatree_t *inhead, servconf_t *sc);

/* vdawrite - write a data tree as a VDA record file with its trailer 519.
 *
 * Same arguments as edifactwrite; enc, ev, sender, recipient and editest
 * are not read.  Records come out in the configuration's order, one line
 * each with CR LF, followed by the trailer "51902" with eight counters.
 * A missing mandatory field is reported and written as blanks; the file
 * stays.
 *
 * Result: 0 when the file was written whole; -1 when it could not be
 * opened, or a write, the flush or the close failed (e.g. a full disk),
 * and then no file of that name exists; -1 also for a NULL outfile.
 * Messages on stderr: perror(outfile) and "vdawrite error\n" when it
 * cannot be opened; "%s: write failed\n" with outfile, then
 * "vdawrite error\n", on a failed write; "dnode: %s\n" per record
 * written; "%s (%d): mandatory element <%s> missing\n" per missing
 * mandatory field.
 */
EDIPROT_API int vdawrite(datatree_t *tree, char *outfile, char *enc,
                         char *ev, datatree_t *outcf, char *sender,
                         char *recipient, int editest);

/* makerecord - turn one VDA line into a record subtree.
 *
 *   buf     the line, NUL-terminated, without its line end; only read.
 *   spp     if not NULL, receives the record's configuration node (a
 *           pointer into inhead, not a copy), or NULL.
 *   inhead  first node of the configuration tree.
 *
 * Result: a new record node with one field node per configured field,
 * owned by the caller (release with freedatatree); NULL when no node has
 * the key "S" + the first three characters of the line.  Nothing is
 * written to stderr outside the trace.
 */
EDIPROT_API datatree_t *makerecord(char *buf, datatree_t **spp,
                                   datatree_t *inhead);

/* printloops - write "LOOPS: " and the first five of the ten loop counters
 * of a VDA read, each as "%d ", and a newline to stderr.  loops must point
 * at ten ints. */
EDIPROT_API void printloops(int *loops);

/* ------------------------------------------------------------------------
 * 5. Host services.  The module does not define these: the process that
 *    loads it must.  `file` is always "ediprot" and `line` the calling
 *    source line; a literal 0 is passed where an int flag is shown.
 * --------------------------------------------------------------------- */

/* Trace level: the top four bits (as unsigned, 0..15) enable trace points
 * of a lower level; read afresh at every trace point. */
extern int tracelevel;

/* A new private copy of s (never NULL); freed by freedatatree. */
char *strsav(char *file, int line, char *s);
/* A new string formatted as sprintf would, of any length (never NULL). */
char *msprintf(char *file, int line, int flag, char *fmt, ...);
/* Copy the descriptive parameters of src to the fresh node dst; leaves
 * xmltag, data, child and next of dst alone. */
void copynodeparms(datatree_t *dst, datatree_t *src, int line);
/* Set parent of every node below tree. */
void setparents(datatree_t *tree, int flag);
/* Free tree, everything below it and behind it in its chain. */
void freedatatree(datatree_t *tree);
/* Dotted path of node from its root; valid until the next call. */
char *pathfornode(datatree_t *node, int flag);
/* Dump tree to stream (tree may be NULL). */
void printdata(datatree_t *tree, int flag, FILE *stream, int line);
/* Read a configuration file into a new tree, NULL on failure. */
datatree_t *readconfig(char *conffile, int flag, char *file, int line);
/* The service configuration with key tag, or NULL. */
servconf_t *getservconf(char *tag);
/* fopen(name, mode) of the named file; NULL with errno set on failure. */
FILE *tmpfopen(char *name, char *mode);

#ifdef __cplusplus
}
#endif

#endif /* EDIPROT_H */
