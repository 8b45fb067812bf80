// The generated ORDERS trees of the write benchmarks: an outbound
// configuration and a data tree of one message with n line items
// (loop instances), numbered as the writer enumerates them.
#ifndef EDIPROT_BENCH_ORDERSTREE_H
#define EDIPROT_BENCH_ORDERSTREE_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ediprot.h"

namespace orderstree {

inline datatree_t *mk(const char *name, const char *data = nullptr)
{
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    tp->xmltag = strdup(name);
    tp->data = data != nullptr ? strdup(data) : nullptr;
    return tp;
}

// Appends `kid` to the children of `parent` behind *last, returns kid.
inline datatree_t *add(datatree_t *parent, datatree_t **last, datatree_t *kid)
{
    if (*last == nullptr)
        parent->child = kid;
    else
        (*last)->next = kid;
    *last = kid;
    return kid;
}

inline datatree_t *el(datatree_t *parent, datatree_t **last, const char *name,
               const char *defval = nullptr, const char *deffunc = nullptr)
{
    datatree_t *e = add(parent, last, mk(name));
    e->edimaxlen = 35;
    e->defval = defval != nullptr ? strdup(defval) : nullptr;
    e->deffunc = deffunc != nullptr ? strdup(deffunc) : nullptr;
    return e;
}

// edi / *ORDERS / $UNH, $BGM, *SG25 ($LIN, $QTY), $UNT
inline datatree_t *makeconfig()
{
    datatree_t *root = mk("edi");
    datatree_t *last = nullptr;
    datatree_t *msg = add(root, &last, mk("*ORDERS"));
    datatree_t *mlast = nullptr;
    datatree_t *unh = add(msg, &mlast, mk("$UNH"));
    datatree_t *ulast = nullptr;
    el(unh, &ulast, "0062", nullptr, "unhcnt");
    datatree_t *s009 = add(unh, &ulast, mk("S009"));
    datatree_t *slast = nullptr;
    el(s009, &slast, "0065", "ORDERS");
    el(s009, &slast, "0052", "D");
    el(s009, &slast, "0054", "96A");
    el(s009, &slast, "0051", "UN");
    datatree_t *bgm = add(msg, &mlast, mk("$BGM"));
    datatree_t *blast = nullptr;
    el(bgm, &blast, "1004");
    datatree_t *sg25 = add(msg, &mlast, mk("*SG25"));
    datatree_t *glast = nullptr;
    datatree_t *lin = add(sg25, &glast, mk("$LIN"));
    datatree_t *llast = nullptr;
    el(lin, &llast, "1082");
    el(lin, &llast, "1229");
    datatree_t *c212 = add(lin, &llast, mk("C212"));
    datatree_t *clast = nullptr;
    el(c212, &clast, "7140");
    el(c212, &clast, "7143", "EN");
    datatree_t *qty = add(sg25, &glast, mk("$QTY"));
    datatree_t *qlast = nullptr;
    datatree_t *c186 = add(qty, &qlast, mk("C186"));
    datatree_t *c6last = nullptr;
    el(c186, &c6last, "6063", "21");
    el(c186, &c6last, "6060");
    datatree_t *unt = add(msg, &mlast, mk("$UNT"));
    datatree_t *tlast = nullptr;
    el(unt, &tlast, "0074", nullptr, "seccnt");
    el(unt, &tlast, "0062", "1");
    setparents(root, 0);
    return root;
}

// One message with `n` line items numbered as the writer enumerates them.
inline datatree_t *makedata(int n)
{
    datatree_t *root = mk("edi");
    datatree_t *last = nullptr;
    datatree_t *msg = add(root, &last, mk("*ORDERS"));
    msg->loopcnt = 1;
    datatree_t *mlast = nullptr;
    datatree_t *bgm = add(msg, &mlast, mk("$BGM"));
    datatree_t *blast = nullptr;
    add(bgm, &blast, mk("1004", "PO4711"));
    char num[32];
    for (int k = 1; k <= n; k++) {
        datatree_t *sg = add(msg, &mlast, mk("*SG25"));
        sg->loopcnt = k;
        datatree_t *glast = nullptr;
        datatree_t *lin = add(sg, &glast, mk("$LIN"));
        datatree_t *llast = nullptr;
        snprintf(num, sizeof num, "%d", k);
        add(lin, &llast, mk("1082", num));
        datatree_t *c212 = add(lin, &llast, mk("C212"));
        datatree_t *clast = nullptr;
        snprintf(num, sizeof num, "40%011d", k);
        add(c212, &clast, mk("7140", num));
        datatree_t *qty = add(sg, &glast, mk("$QTY"));
        datatree_t *qlast = nullptr;
        datatree_t *c186 = add(qty, &qlast, mk("C186"));
        datatree_t *c6last = nullptr;
        snprintf(num, sizeof num, "%d", k % 97 + 1);
        add(c186, &c6last, mk("6060", num));
    }
    setparents(root, 0);
    return root;
}

}  // namespace orderstree

#endif
