// Records placed into a data tree by the structure of their configuration,
// in file order: a record goes forward in the loop instance that is open,
// and where it cannot (a record of a type that already stands there, or one
// of an earlier place) the instance ends and the next instance of the loop
// around it begins, up the levels.  So repeated records of one type, several
// call-offs or delivery notes, and several transmissions each get a loop
// instance of their own, numbered from 1 within their parent as the writer
// counts them.
#ifndef EDI_VDA_PLACE_H
#define EDI_VDA_PLACE_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"

namespace edi {

class RecordPlacer {
public:
    // `config` is the configuration's root; `root` the data tree's root,
    // which receives the loop instances and records.
    RecordPlacer(const datatree_t *config, datatree_t *root);

    // Hangs `record`, made for the configuration node `confnode` (a node
    // below the configuration's root), and takes it over.  False when it
    // has no place behind the records placed so far (a configuration whose
    // top level is no loop cannot take a second transmission): the record
    // is then the caller's still.  `opened`, when given, receives the
    // configuration nodes of the loop instances the record began.
    bool place(datatree_t *record, const datatree_t *confnode,
               std::vector<const datatree_t *> *opened = nullptr);

private:
    struct Frame {
        const datatree_t *conf;  // the loop (or the root) of this instance
        datatree_t *node;        // its node in the data tree
        int lastpos;             // place of the last child used, -1 for none
        datatree_t *lastchild;   // the last node hung below it
    };
    int position(const datatree_t *conf);
    void append(Frame &f, datatree_t *tp);

    const datatree_t *config_;
    std::vector<Frame> stack_;
    std::map<const datatree_t *, int> positions_;
    std::map<std::pair<const datatree_t *, const datatree_t *>, int> instances_;
};

// The record nodes ($S511 ... $S719) of `tree` placed anew, in document
// order, by the structure of `config`: a tree made with another layout of
// the same records (an older configuration, a tree made by hand without
// loop instances) gets the loop instances the writer walks, so that no
// record is left behind unwritten.  Loop and group nodes of the old tree
// go; records keep their fields.  The names of records the configuration
// has no node for are added to `unplaced` (path in the tree), and those
// records are left out.  The root itself stays.
void replacerecords(datatree_t *tree, const datatree_t *config,
                    std::vector<std::string> &unplaced);

}  // namespace edi

#endif
