/*
 * edi.h - libedi: UN/EDIFACT interchanges and VDA record files as real
 * partners send them, read into data trees and written back, with the
 * configurations from the UN/EDIFACT directories, validation and every
 * finding as a record.
 *
 * libedi loads the ediprot module (libediprot.so) and its host layer
 * (libedihost.so) itself; a program links libedi alone and includes this
 * header.  The data tree (datatree_t) and envelope types are those of
 * ediprot.h, which this header includes.
 *
 * Ownership.  Every object the library returns (edi_reader, edi_message,
 * edi_result, strings) is the caller's, to be released with the function
 * named beside it.  Pointers into an object (trees, findings, texts) stay
 * valid until that object is released, unless said otherwise.
 *
 * Findings.  No function prints.  What the library or the module has to
 * say about an input or an output comes back as edi_finding records, in
 * the order it arose: why an operation failed, the module's own messages,
 * segments or records left out, what a working copy changed, validation
 * findings.  Each record has the sentence the edi command prints for it.
 *
 * Threads.  Every function may be called from any thread.  The module
 * keeps its state in globals (the service characters, the input it
 * reads), so the library lets one call at a time into the module: reads
 * and writes of several threads are serialised there, everything else
 * (normalising text, validation, JSON) runs in parallel.  One object is
 * used by one thread at a time; different objects need no care.  While a
 * call is inside the module, the library catches what is written to the
 * process's standard error (file descriptor 2) to turn the module's
 * messages into findings; output of other threads to descriptor 2 in that
 * time is caught with it and reported as module findings.  With a trace
 * level set (edi_options.trace >= 0) nothing is caught and the module's
 * trace goes to standard error.
 *
 * Limits.  Inputs are read into memory whole; a segment of the module's
 * reader holds at most 8191 characters; configurations, trees and files
 * are bounded by memory only.
 */
#ifndef EDI_H
#define EDI_H

#include <stddef.h>

#include "ediprot.h"

#if defined(__GNUC__)
#define EDI_API __attribute__((visibility("default")))
#else
#define EDI_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- findings ------------------------------------------------------- */

typedef enum edi_finding_kind {
    EDI_FINDING_FAILURE = 0,  /* why the operation gave no result */
    EDI_FINDING_MODULE = 1,   /* a line of the module, as it wrote it */
    EDI_FINDING_LEFT_OUT = 2, /* segments or records that did not reach the tree */
    EDI_FINDING_CHANGED = 3,  /* what a working copy or an output changed,
                                 or a value written other than the tree holds it */
    EDI_FINDING_VALIDATION = 4, /* what a message breaks of its directory */
    EDI_FINDING_NOTE = 5      /* how the input was read (a layout taken from
                                 the message itself, a configuration key) */
} edi_finding_kind;

typedef enum edi_severity {
    EDI_SEVERITY_ERROR = 0,
    EDI_SEVERITY_WARNING = 1,
    EDI_SEVERITY_INFO = 2
} edi_severity;

/* One finding.  Texts are never NULL ("" when not known).  Fields may be
 * added at the end in later versions: read it through the pointer the
 * library gives, never copy or allocate one. */
typedef struct edi_finding {
    edi_finding_kind kind;
    edi_severity severity;
    const char *file;    /* the input, tree or output it is about */
    int message;         /* message number in the file, from 1; 0: none */
    size_t segment;      /* segment position in its message (UNH is 1); 0: none */
    const char *tag;     /* segment tag or record type */
    const char *element; /* element (name or path) */
    const char *text;    /* the sentence; printed as "FILE: TEXT", or TEXT
                            alone when FILE is "" */
    int verbose;         /* 0: always shown by the edi command; 1: a detail it
                            shows only with --verbose; 2: a summary that
                            stands for details, shown only without --verbose */
    /* The exact place and the code, as far as known (0 or "" when not): */
    const char *interchange_ref; /* UNB 0020 of the interchange it is in */
    const char *message_ref;     /* UNH 0062 of its message */
    size_t file_segment;  /* segment position in the file, from 1 (VDA: the line) */
    size_t offset;        /* byte offset of that segment (or line) in the file */
    int element_pos;      /* element position in the segment, from 1 */
    int component_pos;    /* component position in the element, from 1 */
    int repetition;       /* repetition of the element, from 1 */
    const char *data_element; /* data element, composite or component number
                                 (0065, C002, 1001) or VDA field name */
    const char *value;    /* the value found */
    int code;             /* UN/EDIFACT syntax error code (data element 0085):
                             12 invalid value, 13 missing, 15 not supported in
                             this position, 16 too many constituents, 28
                             references do not match, 29 control count does
                             not match, 35 too many repetitions, 36 too many
                             segment group repetitions, 37 invalid type of
                             characters, 39 data element too long; 0 none */
} edi_finding;

/* ---- options -------------------------------------------------------- */

/* How an input is read.  Fill with edi_options_init, then set fields. */
typedef struct edi_options {
    size_t size;               /* sizeof(edi_options); set by edi_options_init */
    int raw;                   /* 1: the module gets the bytes untouched (no
                                  normalisation of transport or envelope) */
    int keep_going;            /* 1: segments or records left out of the tree
                                  are findings, not a failure */
    int validate;              /* 1: each EDIFACT message is also validated
                                  against its directory (findings of kind
                                  EDI_FINDING_VALIDATION) */
    const char *const *configs; /* configuration tree files, nconfigs of them;
                                  with several, each message goes with the one
                                  named after its type; none: generated from
                                  the directory UNH names, or from servconf */
    size_t nconfigs;
    const char *servconf;      /* service configuration file, or NULL */
    int trace;                 /* module trace level 0..15, or -1 for none */
    const char *directories;   /* the directory data folder (D96A.json, ...);
                                  NULL: as edi_directories_path says */
    size_t max_findings;       /* validation stops collecting after this many
                                  findings of an input; 0: all */
    /* One worker's share of an input read by several (edi_open_* only):
       with parts > 1 the reader gives only the messages whose number n in
       the file has (n - 1) % parts == part, and reads no other; their
       trees and numbers are those a read of all gives.  Findings about
       the input as a whole come to every worker.  0 or 1: all messages. */
    int parts;
    int part;
} edi_options;

/* Sets every field to its default: nothing set, trace -1. */
EDI_API void edi_options_init(edi_options *opt);

/* How a tree is written. Fill with edi_write_options_init. */
typedef struct edi_write_options {
    size_t size;                /* sizeof(edi_write_options) */
    const char *const *configs; /* outbound configuration files; none: each
                                   message type's is generated from its UNH
                                   (or `message`) */
    size_t nconfigs;
    const char *message;        /* TYPE:DIRECTORY (ORDERS:D96A) for a tree whose
                                   UNH names no directory, or NULL */
    const char *sender;         /* UNB sender identification; needed by edi_write
                                   (status 2 when "" or NULL) unless the tree
                                   carries its envelope; not by VDA */
    const char *recipient;      /* UNB recipient identification */
    const char *reference;      /* control reference for UNB and UNZ; NULL: a new one */
    int test;                   /* 1: UNB marks a test interchange */
    int exact;                  /* 1: the module's output as it stands (no
                                   count, reference or date fixes) */
    const char *name;           /* names the tree in findings ("" or NULL: "tree") */
    const char *output;         /* names the output in findings (NULL: "") */
    int trace;                  /* module trace level, or -1 */
    const char *directories;    /* the directory data folder; NULL: the default */
    int keep_going;             /* 1: values of the tree that the writer would
                                   leave out (no place in the configuration) or
                                   cut to their length are warnings and the
                                   output is written; 0: they fail the write
                                   (status 1, findings naming each).  Read only
                                   when `size` covers it (edi_write_options_init) */
    /* The envelope.  A tree read from an interchange carries the envelope
       it came in (root children `#envelope` and `#group`), which is written
       back; what these name is set over it.  `sender` and `recipient` may
       be ID, ID:QUALIFIER or ID:QUALIFIER:ROUTING. */
    const char *syntax;          /* UNB S001: IDENTIFIER:VERSION (UNOC:3), or NULL;
                                    version 4 writes dates as CCYYMMDD */
    const char *application_ref; /* UNB 0026, or NULL */
    int ack_request;             /* 1: UNB 0031 asks for an acknowledgement */
    const char *group;           /* UNG 0038: the messages go in one functional
                                    group of this identification, or NULL */
} edi_write_options;

EDI_API void edi_write_options_init(edi_write_options *opt);

/* ---- results -------------------------------------------------------- */

/* The outcome of one operation: a status, a tree and/or a text, a list of
 * strings, and the findings. */
typedef struct edi_result edi_result;

/* 0 when the operation gave its result, 1 when it failed (the findings
 * say why), 2 when its arguments were refused. */
EDI_API int edi_result_status(const edi_result *res);
/* The tree of a read (one root whose children are the messages), or NULL.
 * Owned by the result. */
EDI_API datatree_t *edi_result_tree(const edi_result *res);
/* Takes the tree out of the result: the caller releases it with
 * freedatatree (ediprot.h).  NULL when there is none. */
EDI_API datatree_t *edi_result_take_tree(edi_result *res);
/* The text of the result (an interchange or record file written, a
 * configuration tree, a JSON or tree text), `*len` bytes, NUL behind it;
 * NULL when there is none.  `len` may be NULL. */
EDI_API const char *edi_result_text(const edi_result *res, size_t *len);
/* The strings of a result: the configuration keys of a read, directory
 * names or "TYPE\tNAME" lines of a list. */
EDI_API size_t edi_result_count(const edi_result *res);
EDI_API const char *edi_result_item(const edi_result *res, size_t i);
EDI_API size_t edi_result_finding_count(const edi_result *res);
/* Finding i (0 <= i < count), NULL beyond. */
EDI_API const edi_finding *edi_result_finding(const edi_result *res, size_t i);
/* Releases the result and all it owns; NULL is ignored. */
EDI_API void edi_result_free(edi_result *res);

/* Writes the result's text to `path` whole or not at all: a temporary
 * file beside it is renamed over it once complete; "-" or NULL is
 * standard output.  0, or -1 with a failure finding appended to `res`. */
EDI_API int edi_result_save(edi_result *res, const char *path);

/* `len` bytes written to `path` whole or not at all, as edi_result_save
 * does; the result's status and findings tell how it went. */
EDI_API edi_result *edi_save(const char *path, const void *data, size_t len);

/* A file written piece by piece that takes the place of `path` only when
 * whole: the pieces go to a temporary file beside it, which
 * edi_output_close renames over `path` when `keep` is 1 and removes
 * otherwise, so that a failed or abandoned output never stands where a
 * good one is expected.  "-" or NULL writes to standard output as the
 * pieces come.  Never NULL but out of memory. */
typedef struct edi_output edi_output;
EDI_API edi_output *edi_output_open(const char *path);
/* Appends `len` bytes: 0, or -1 once the output failed (the close's
 * findings say why). */
EDI_API int edi_output_write(edi_output *o, const void *data, size_t len);
/* Closes and releases `o`; the result's status is 0 when the output was
 * written whole (and, with `keep`, put in place), 1 with a failure finding
 * naming the path otherwise. */
EDI_API edi_result *edi_output_close(edi_output *o, int keep);

/* ---- reading message by message ------------------------------------ */

typedef struct edi_reader edi_reader;
typedef struct edi_message edi_message;

/* An EDIFACT input from a file, from `len` bytes in memory (copied; `name`
 * names it in findings, NULL: "input") or from a file descriptor read to
 * its end (not closed).  Never NULL but out of memory: a reader of an
 * input that cannot be read gives no message and its findings say why.
 * `opt` NULL: the defaults. */
EDI_API edi_reader *edi_open_path(const char *path, const edi_options *opt);
EDI_API edi_reader *edi_open_memory(const void *data, size_t len, const char *name,
                                    const edi_options *opt);
EDI_API edi_reader *edi_open_fd(int fd, const char *name, const edi_options *opt);

/* The next message of the input, in file order.  Returns 1 and sets
 * `*msg` (the caller's, release with edi_message_free), 0 at the end of
 * the input, -1 when the input failed (the reader's findings say why;
 * messages given before stay good).  After 0 or -1 every further call
 * returns the same. */
EDI_API int edi_next(edi_reader *r, edi_message **msg);

/* Findings of the input as a whole so far (the envelope, working copies,
 * a failure), and those of every message given. */
EDI_API size_t edi_reader_finding_count(const edi_reader *r);
EDI_API const edi_finding *edi_reader_finding(const edi_reader *r, size_t i);
/* Releases the reader; messages taken from it stay valid. */
EDI_API void edi_close(edi_reader *r);

/* The message's data tree: its message node (named after the message
 * type, `*ORDERS`), children below.  Owned by the message. */
EDI_API const datatree_t *edi_message_tree(const edi_message *m);
/* Takes the tree out: the caller releases it with freedatatree. */
EDI_API datatree_t *edi_message_take_tree(edi_message *m);

/* The envelope a message came in, as the partner sent it.  Texts are
 * never NULL ("" when absent); service characters are those of UNA, or
 * the defaults when the interchange has none. */
typedef struct edi_envelope {
    char component_sep, element_sep, decimal_mark, release_char,
        repetition_sep, segment_term; /* UNA; repetition_sep ' ' when none */
    int has_una;
    const char *syntax_id;       /* UNB S001 0001, e.g. UNOA */
    const char *syntax_version;  /* UNB S001 0002, e.g. 3 */
    const char *sender;          /* UNB S002 0004 */
    const char *sender_qualifier;     /* S002 0007 */
    const char *recipient;       /* UNB S003 0010 */
    const char *recipient_qualifier;  /* S003 0007 */
    const char *date;            /* UNB S004 0017 */
    const char *time;            /* UNB S004 0019 */
    const char *control_ref;     /* UNB 0020 */
    const char *application_ref; /* UNB 0026 */
    const char *test_indicator;  /* UNB 0035 */
    int has_ung;
    const char *group_id;        /* UNG 0038 */
    const char *group_sender;    /* UNG S006 0040 */
    const char *group_recipient; /* UNG S007 0044 */
    const char *group_ref;       /* UNG 0048 */
    int interchange;             /* counted from 1 in the file */
    /* Every element as received, as the `#envelope` node (UNA, charset, UNB)
       and `#group` node (UNG; NULL when the message is in no group) that a
       whole read's tree has before its messages (docs/envelope.md). */
    const datatree_t *unb_tree;
    const datatree_t *ung_tree;
    const char *charset;         /* the set the message's values are in, as
                                    decoded for JSON: "ISO-8859-1", "UTF-8",
                                    "US-ASCII", ...; "" for an unknown one */
} edi_envelope;

EDI_API const edi_envelope *edi_message_envelope(const edi_message *m);
/* UNH 0062, and S009's type (0065), version (0052) and release (0054). */
EDI_API const char *edi_message_reference(const edi_message *m);
EDI_API const char *edi_message_type(const edi_message *m);
EDI_API const char *edi_message_version(const edi_message *m);
EDI_API const char *edi_message_release(const edi_message *m);
/* The message's number in the file, from 1. */
EDI_API int edi_message_number(const edi_message *m);
/* Its segments in the file, UNH to UNT. */
EDI_API size_t edi_message_segments(const edi_message *m);
/* The findings about this message. */
EDI_API size_t edi_message_finding_count(const edi_message *m);
EDI_API const edi_finding *edi_message_finding(const edi_message *m, size_t i);
EDI_API void edi_message_free(edi_message *m);

/* ---- whole inputs and outputs -------------------------------------- */

/* An EDIFACT input read whole into one tree (one root, the messages of
 * every interchange below it in file order): status, tree, the
 * configuration keys as items, findings.  `path` "-" reads standard
 * input. */
EDI_API edi_result *edi_read(const char *path, const edi_options *opt);
EDI_API edi_result *edi_read_memory(const void *data, size_t len, const char *name,
                                    const edi_options *opt);

/* A read's tree as the JSON document of the edi command, with the read's
 * key, keys and changes; the caller frees it with edi_free.  NULL when the
 * result has no tree. */
EDI_API char *edi_result_json(const edi_result *res);

/* A VDA record file read with the configuration `config` (a file), or
 * written from `tree` with it.  A write's text is the record file; as with
 * edi_write, a value without a place or cut fails it unless
 * opt->keep_going, and a tree holding EDIFACT messages is refused. */
EDI_API edi_result *edi_vda_read(const char *path, const char *config, const edi_options *opt);
EDI_API edi_result *edi_vda_write(datatree_t *tree, const char *config,
                                  const edi_write_options *opt);
/* A VDA record file of `len` bytes held in memory (`name` names it in
 * findings, NULL: "input"), read as edi_vda_read reads a file. */
EDI_API edi_result *edi_vda_read_memory(const void *data, size_t len, const char *name,
                                        const char *config, const edi_options *opt);

/* `tree` (a root whose children are messages, as a read gives it) written
 * as one interchange, with the fixes a partner checks: each loop numbered
 * as the configuration reads it, values that will be written changed named
 * first (findings of kind EDI_FINDING_CHANGED), UNT counts and references, UNZ
 * count and a control reference set, date and time from SOURCE_DATE_EPOCH
 * when set.  The tree is renumbered in place and stays the caller's.  The
 * result's text is the interchange.  Nothing is lost without a word: a
 * value of the tree that the configuration has no place for (findings of
 * kind EDI_FINDING_LEFT_OUT naming message, path and value) or that would
 * be cut to its length fails the write (status 1, no text) unless
 * opt->keep_going; a tree holding VDA records is refused (status 1). */
EDI_API edi_result *edi_write(datatree_t *tree, const edi_write_options *opt);

/* The same for `n` message trees (message nodes such as edi_next gives,
 * or built by hand), written in this order as one interchange.  The trees
 * stay the caller's and are linked back as they were. */
EDI_API edi_result *edi_write_messages(datatree_t *const *messages, size_t n,
                                       const edi_write_options *opt);

/* Findings of the EDIFACT file `path` (or `len` bytes, named `name`)
 * against the directories its message headers name: kind
 * EDI_FINDING_VALIDATION, each with message number, segment and tag.
 * Status 0 for a clean file, 1 with findings. */
EDI_API edi_result *edi_validate(const char *path);
EDI_API edi_result *edi_validate_memory(const void *data, size_t len, const char *name);
/* The same with options: the directory data and max_findings of `opt`
 * (NULL: the defaults). */
EDI_API edi_result *edi_validate_opt(const char *path, const edi_options *opt);

/* The result's findings as one JSON document on one line, `file` naming
 * the input (docs/validation.md gives the schema); free with edi_free. */
EDI_API char *edi_result_report(const edi_result *res, const char *file);

/* ---- acknowledgements ----------------------------------------------- */

/* CONTRL interchanges answering the EDIFACT file `path`: for each of its
 * interchanges, one addressed back to its sender (sender and recipient
 * exchanged, the inbound syntax identifier and version), whose UCI names
 * the inbound control reference and whose UCM accepts (7) or rejects (4)
 * each message, with a UCS for each faulty segment and a UCD for each
 * faulty element and its syntax error code (0085).  `errors_only`: only
 * interchanges with a rejection get one (the text may then be empty).
 * `reference` (NULL: a new one) is the CONTRL's control reference; the
 * date is SOURCE_DATE_EPOCH's when set.  The result's text is the CONTRL
 * file, its findings those of the validation behind it; status 0 when the
 * file was acknowledged whole, 1 when something was rejected or the file
 * could not be read.  `opt`: the directory data and max_findings. */
EDI_API edi_result *edi_ack(const char *path, const edi_options *opt, int errors_only,
                            const char *reference);

/* ---- configurations ------------------------------------------------- */

/* The configuration tree (text in the result, and parsed as its tree) of
 * `message` (ORDERS) in `directory` (D96A), inbound or outbound. */
EDI_API edi_result *edi_config(const char *message, const char *directory, int outbound);
/* Items: the directories the data holds (directory NULL), or the messages
 * of one directory as "TYPE\tNAME". */
EDI_API edi_result *edi_config_list(const char *directory);
/* The folder of the directory data in use: $EDIPROT_DIRECTORIES, else the
 * data installed beside the library.  The caller frees it with edi_free. */
EDI_API char *edi_directories_path(void);

/* ---- tree formats --------------------------------------------------- */

/* The tree (node, below and behind it) as tree text or as the JSON
 * document; free with edi_free.  NULL for a NULL tree. */
EDI_API char *edi_tree_to_text(const datatree_t *tree, size_t *len);
EDI_API char *edi_tree_to_json(const datatree_t *tree, size_t *len);
/* Forms of a tree's text, the `form` flags of the functions below (or-ed).
 * The full form has every field of every node, configuration parameters
 * and empty nodes included (what edi_tree_to_text and edi_tree_to_json
 * give).  The compact form has only the nodes that carry data (a value,
 * or a value below them) with their name, value and loop number: all a
 * write needs, since the writer walks its configuration.  Compact JSON is
 * marked "form": "compact" (docs/json.md).  Both forms are read back by
 * edi_tree_parse and edi_tree_load. */
enum {
    EDI_FORM_FULL = 0,
    EDI_FORM_COMPACT = 1,
    EDI_FORM_ONE_LINE = 2 /* JSON: the whole document on one line */
};
/* The tree as tree text or JSON document in `form`; free with edi_free.
 * NULL for a NULL tree, or for a tree deeper than 10,000 levels in JSON
 * or in the compact form. */
EDI_API char *edi_tree_to_text_opt(const datatree_t *tree, int form, size_t *len);
EDI_API char *edi_tree_to_json_opt(const datatree_t *tree, int form, size_t *len);
/* edi_result_json in `form`. */
EDI_API char *edi_result_json_opt(const edi_result *res, int form);
/* One message as a JSON document: "message" its number in the file,
 * "envelope" the values of its UNA, UNB and UNG that are present (names
 * as the fields of edi_envelope, "una" the six service characters), and
 * "tree" its message node, in `form` (EDI_FORM_COMPACT |
 * EDI_FORM_ONE_LINE is a line of NDJSON).  Free with edi_free; NULL when
 * the message has no tree (taken out). */
EDI_API char *edi_message_json(const edi_message *m, int form);
/* A tree from tree text or JSON (told apart by the first character that
 * is not white space) held in memory; `name` names it in findings. */
EDI_API edi_result *edi_tree_parse(const char *text, size_t len, const char *name);
/* The same from a file ("-": standard input). */
EDI_API edi_result *edi_tree_load(const char *path);

/* ---- character sets ------------------------------------------------- */

/* An interchange declares its character set in its syntax identifier (UNB
 * S001 0001): UNOA and UNOB (levels A and B, 7-bit; IATA and IATB alike),
 * UNOC ISO-8859-1, UNOD -2, UNOE -5, UNOF -7, UNOG -3, UNOH -4, UNOI -6,
 * UNOJ -8, UNOK -9, UNOL -15, UNOW and UNOY UTF-8.  UNOX (ISO 2022 code
 * extension) is not supported.  Where a function takes `charset`, it is a
 * syntax identifier ("UNOE") or an IANA set name ("ISO-8859-5", "UTF-8",
 * "US-ASCII"; case, '-' and '_' do not matter); NULL or "" is ISO-8859-1.
 * docs/charsets.md has the rules. */

/* The bytes `data` (`len` of them) of set `charset` as UTF-8 text, NUL
 * terminated; `*outlen` (when not NULL) receives its length.  Nothing is
 * lost: edi_text_encode gives the same bytes back.  A byte the set has no
 * character for (an unassigned ISO 8859 position, a byte of malformed
 * UTF-8 in UTF-8) becomes the private-use character U+F700 + byte
 * (U+F780-U+F7FF).  Bytes above 127 in levels A and B are read as
 * ISO-8859-1.  NULL for an unknown set (or no memory); free with edi_free. */
EDI_API char *edi_text_decode(const char *data, size_t len, const char *charset,
                              size_t *outlen);
/* The UTF-8 text `utf8` (`len` bytes) as bytes of set `charset`, NUL
 * terminated (the bytes may hold NUL themselves: use `*outlen`).  Each
 * character the set has no code for, and each byte of malformed UTF-8,
 * is written as '?' and counted in `*unencodable` (when not NULL; 0 when
 * all was written).  U+F780-U+F7FF are written as the byte they stand for;
 * in levels A and B U+0080-U+00FF are written as ISO-8859-1 bytes, as
 * edi_text_decode reads them.  NULL for an unknown set (or no memory);
 * free with edi_free. */
EDI_API char *edi_text_encode(const char *utf8, size_t len, const char *charset,
                              size_t *outlen, size_t *unencodable);
/* The IANA name of the set a syntax identifier declares ("UNOC":
 * "ISO-8859-1", "UNOA": "US-ASCII", "UNOY": "UTF-8"), a static string;
 * NULL when it declares none ("UNOQ", "UNOX", NULL). */
EDI_API const char *edi_charset_name(const char *syntax_id);
/* The syntax identifier that declares the set `charset` names
 * ("ISO-8859-5": "UNOE", "UTF-8": "UNOY", "US-ASCII": "UNOB"), a static
 * string; NULL for an unknown set. */
EDI_API const char *edi_charset_syntax_id(const char *charset);
/* The set the bytes are really in, as edi_charset_name names it: "UTF-8"
 * when `charset` is a single-byte set but every byte above 127 belongs
 * to a well-formed UTF-8 sequence (at least one); else the name of
 * `charset` itself.  NULL for an unknown set. */
EDI_API const char *edi_charset_detect(const char *data, size_t len, const char *charset);

/* ---- misc ----------------------------------------------------------- */

/* Releases a tree the library gave (a taken tree, or a whole chain);
 * NULL is ignored. */
EDI_API void edi_tree_free(datatree_t *tree);

/* Frees a string the library returned. */
EDI_API void edi_free(void *p);
/* "1.0.0" */
EDI_API const char *edi_version(void);

#ifdef __cplusplus
}
#endif

#endif
