#!/usr/bin/env python3
"""Plants small faults in the module one at a time and counts how many the
test suite catches: a flipped comparison, an off-by-one, a dropped
statement, a changed return value.  Each fault is built in its own build
folder (build/mutate), the plain suite runs against it, and the source is
put back whatever happens.

    scripts/mutate.py [-j N] [--only NAME[,NAME...]] [--tests REGEX]

Prints one line per fault (caught or MISSED, and the first failing test)
and the count.  A fault that does not build counts as neither and is
reported, so that the list is kept in step with the code.  --tests runs
only the tests whose names match (ctest -R): whether one folder catches a
fault on its own.
"""
import argparse
import functools
import os
import subprocess
import sys

print = functools.partial(print, flush=True)  # progress as it goes

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(ROOT, "build", "mutate")

# (name, file under src/programs (lib/... under src), original text, faulty text)
FAULTS = [
    ("segreader-release-ignored", "edifact/segreader.cpp",
     "if (c == term && !(n > 0 && segbuf[n - 1] == esc)) {",
     "if (c == term) {"),
    ("segreader-no-elements-split", "edifact/segreader.cpp",
     "if (segbuf[3] == dst_sep) {", "if (segbuf[3] != dst_sep) {"),
    ("fill-tag-compare-3", "edifact/templatefill.cpp",
     "strncasecmp(xdata->xmltag, tp->xmltag, 4) == 0",
     "strncasecmp(xdata->xmltag, tp->xmltag, 3) == 0"),
    ("fill-inherited-copies-dropped", "edifact/pendingshape.cpp",
     "if (datatree_t *after = nextinblock(r, o)) {",
     "if (datatree_t *after = nullptr) {"),
    ("fill-pending-copy-never-opened", "edifact/pendingshape.cpp",
     "? Verdict::open\n               : Verdict::pass;",
     "? Verdict::pass\n               : Verdict::pass;"),
    ("fill-missing-mandatory-in-copy-ignored", "edifact/pendingshape.cpp",
     "        if (f.firstmand == nullptr)\n            return Verdict::pass;",
     "        if (true)\n            return Verdict::pass;"),
    ("fill-sibling-loops-of-one-name-merged", "edifact/pendingshape.cpp",
     "if (!inblock(n, e) || originof(n, e) != o)",
     "if (!inblock(n, e) || strcmp(originof(n, e)->xmltag, o->xmltag) != 0)"),
    ("fill-mandatory-ignored", "edifact/templatefill.cpp",
     "return force == ef_mand;", "return false;"),
    ("numberloops-no-failed-try", "edifact/loopnumbers.cpp",
     "            // The writer's try that finds no further occurrence.\n            ++i;",
     "            // The writer's try that finds no further occurrence."),
    ("prune-pending-loop-kept", "edifact/emptyloop.cpp",
     "tp->iseditag == 0 && pending::settle(tp)) {",
     "tp->iseditag == 0 && pending::settle(tp) && false) {"),
    ("searchlooppath-number-ignored", "tree/searchlooppath.cpp",
     "if (isloop && lct != tp->loopcnt)", "if (false && lct != tp->loopcnt)"),
    ("searchlooppath-length-ignored", "tree/searchlooppath.cpp",
     "if (strlen(tp->xmltag) != n || strncmp(tp->xmltag, path, n) != 0)\n            continue;",
     "if (strncmp(tp->xmltag, path, n) != 0)\n            continue;"),
    ("insrecord-loop-number-ignored", "vda/insrecord.cpp",
     "if (strcmp(tp->xmltag, current) == 0 && (!inloop || tp->loopcnt == loops[lvl]))",
     "if (strcmp(tp->xmltag, current) == 0)"),
    ("insrecord-depth-off-by-one", "vda/insrecord.cpp",
     "if (lvl + nloops > kLoopDepths) {", "if (lvl + nloops >= kLoopDepths) {"),
    ("makerecord-width-unchecked", "vda/makerecord.cpp",
     "if (n > width)", "if (n > width + 1)"),
    ("nodeconvert-cut-off-by-one", "convert/edinodeconvert.cpp",
     "if (n <= want)\n        return n;", "if (n <= want)\n        return n + 1;"),
    ("nodeconvert-release-at-cut", "convert/edinodeconvert.cpp",
     "return want - 1;", "return want;"),
    ("segwriter-trailing-empties-kept", "edifact/segwriter.cpp",
     "seg.text.resize(static_cast<size_t>(last_data - seg.start));", "(void)last_data;"),
    ("segwriter-segment-without-user-data", "edifact/segwriter.cpp",
     "if (was_data != 0) {", "if (true) {"),
    ("segwriter-unh-count-from-0", "edifact/segwriter.cpp",
     "sectioncnt = 1;", "sectioncnt = 0;"),
    ("segwriter-leading-component-separator", "edifact/segwriter.cpp",
     "if (cldp != tp->child)", "if (cldp != tp->child || cldp->next == nullptr)"),
    ("editraverse-counter-per-loop-node", "edifact/segwriter.cpp",
     "if (tp->xmltag[0] == '*') {\n            for (;;) {",
     "if (tp->xmltag[0] == '*') {\n            i = 0;\n            for (;;) {"),
    ("edifactwrite-partner-cut-34", "edifact/edifactwrite.cpp",
     "constexpr size_t kPartnerMax = 35;", "constexpr size_t kPartnerMax = 34;"),
    ("edifactwrite-test-flag-inverted", "edifact/edifactwrite.cpp",
     "if (editest != 0)", "if (editest == 0)"),
    ("edifactwrite-file-kept-on-error", "edifact/edifactwrite.cpp",
     "    }\n    unlink(outfile);\n    return -1;\n}", "    }\n    return -1;\n}"),
    ("segreader-component-release-ignored", "edifact/segreader.cpp",
     "if (cp != nullptr && (cp == tp->data || cp[-1] != escape))", "if (cp != nullptr)"),
    ("segreader-split-release-ignored", "edifact/segreader.cpp",
     "if (ocp - 1 > piece && ocp[-2] == escape) {", "if (false) {"),
    ("emptyloop-childless-loop-dropped", "edifact/emptyloop.cpp",
     "if (tp->child != nullptr)\n                lrc = prune(&tp->child, below);",
     "lrc = tp->child != nullptr ? prune(&tp->child, below) : 0;"),
    ("revconvert-sdate-day-zero-only-tens", "convert/edirevconvert.cpp",
     "if (udata[4] == '0' && udata[5] == '0') {", "if (udata[4] == '0') {"),
    ("revconvert-float0-last-zero-kept", "convert/edirevconvert.cpp",
     "while (*ip == '0')\n", "while (*ip == '0' && ip[1] != '\\0')\n"),
    ("resolvevalue-empty-asks-default", "convert/resolvevalue.cpp",
     "if (dnode != nullptr && dnode->data != nullptr) {",
     "if (dnode != nullptr && dnode->data != nullptr && dnode->data[0] != '\\0') {"),
    ("resolvevalue-mandatory-not-counted", "convert/resolvevalue.cpp",
     "        errcnt++;\n", "\n"),
    ("hasdata-empty-not-data", "tree/hasdata.cpp",
     "if (tree->data != nullptr) {", "if (tree->data != nullptr && tree->data[0] != '\\0') {"),
    ("copysubtree-parameters-lost", "tree/copysubtree.cpp",
     "copynodeparms(np, tp, __LINE__);", ""),
    ("searchpath-case-sensitive", "tree/searchpath.cpp",
     "strncasecmp(head->xmltag, path, n)", "strncmp(head->xmltag, path, n)"),
    ("findsatz-prefix-match", "vda/findsatz.cpp",
     "strcmp(sp->xmltag + 1, satz) == 0", "strncmp(sp->xmltag + 1, satz, 3) == 0"),
    ("recwriter-empty-field-short", "vda/recwriter.cpp",
     "const int width = tp->edilen > 0 ? tp->edilen : 0;",
     "const int width = tp->edilen > 1 ? tp->edilen - 1 : 0;"),
    ("recwriter-trailer-counter-width", "vda/recwriter.cpp",
     "i < rp->len; i++)", "i < rp->len - 1; i++)"),
    ("vdaread-cr-kept", "vda/vdaread.cpp",
     "if (len > 0 && buf[len - 1] == '\\r')", "if (false)"),
    # libedi's text layer.
    ("transport-blank-separator-taken-out", "lib/text/transport.cpp",
     "&& c != sx.seg && c != sx.dst &&", "&& c != sx.seg &&"),
    ("segments-release-run-not-counted", "lib/text/segments.cpp",
     "return run % 2 == 1;", "return run > 0;"),
    ("reescape-decimal-mark-chosen", "lib/text/reescape.cpp",
     "c != sx.cmp && c != sx.dec &&", "c != sx.cmp &&"),
    ("envelope-released-separator-as-qualifier", "lib/text/envelope.cpp",
     "componentsof(els[e], s.sx).size() > 1", "els[e].find(s.sx.cmp) != std::string::npos"),
    ("countfix-unh-counted-twice", "lib/text/countfix.cpp",
     "            insegs = 0;", "            insegs = 1;"),
    ("setdate-local-time", "lib/text/countfix.cpp",
     "gmtime_r(&when, &tm);", "localtime_r(&when, &tm);"),
    ("compositepad-released-separator-padded", "lib/text/compositepad.cpp",
     "el.find(s.sx.cmp) == std::string_view::npos", "componentsof(el, s.sx).size() == 1"),
    ("envelopevalues-repetition-despite-una", "lib/text/envelopevalues.cpp",
     "if (!v.una && !v.syntaxversion.empty()", "if (!v.syntaxversion.empty()"),
]


def run(cmd, **kw):
    return subprocess.run(cmd, cwd=ROOT, capture_output=True, text=True, **kw)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("-j", type=int, default=2)
    ap.add_argument("--only")
    ap.add_argument("--tests", help="run only the tests matching this (ctest -R)")
    args = ap.parse_args()
    # No debug information: a fault relinks every test program, and that is
    # most of the time a fault takes.
    run(["cmake", "-S", ".", "-B", BUILD, "-DCMAKE_BUILD_TYPE=Release",
         "-DEDIPROT_BUILD_BENCH=OFF"], check=True)
    caught = missed = broken = 0
    for name, rel, old, new in FAULTS:
        if args.only and name not in args.only.split(","):
            continue
        path = os.path.join(ROOT, "src", rel if rel.startswith("lib/") else "programs/" + rel)
        with open(path) as f:
            text = f.read()
        if text.count(old) != 1:
            print(f"{name}: not planted (the code changed: update scripts/mutate.py)")
            broken += 1
            continue
        try:
            with open(path, "w") as f:
                f.write(text.replace(old, new))
            b = run(["cmake", "--build", BUILD, f"-j{args.j}"])
            if b.returncode != 0:
                print(f"{name}: does not build")
                broken += 1
                continue
            # The first failure decides; a fault that makes a walk endless
            # fails by the suite's own time limit of a test (a shorter one
            # would fail the slowest tests of a sound build on a busy
            # machine and count faults as caught that nothing caught).  The
            # install check builds a program against the installed files
            # and cannot see a fault in the module's logic.
            only = ["-R", args.tests] if args.tests else []
            t = subprocess.run(["ctest", "-j", str(args.j), "--stop-on-failure",
                                "-E", "^install[.]"] + only, cwd=BUILD,
                               capture_output=True, text=True)
            failed = [l for l in t.stdout.splitlines() if "***" in l or "(Failed)" in l]
            if t.returncode != 0:
                caught += 1
                first = failed[0].split(":", 1)[-1].strip() if failed else "?"
                print(f"{name}: caught ({len(failed)} failing; {first[:100]})")
            else:
                missed += 1
                print(f"{name}: MISSED")
        finally:
            with open(path, "w") as f:
                f.write(text)
    run(["cmake", "--build", BUILD, f"-j{args.j}"])
    print(f"caught {caught} of {caught + missed} planted faults"
          + (f" ({broken} not planted or not built)" if broken else ""))
    return 0


if __name__ == "__main__":
    sys.exit(main())
