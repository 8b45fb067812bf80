// Elements that stand where the configuration has a composite but hold no
// component separator ("NAD+BY+...+Koenig+" with a name composite, or an
// empty element).  The module's reader fills such a composite's components
// from this element AND the elements behind it, and then fills those
// elements again at their own places, so that one value lands in several
// nodes and is written back several times.  In the working copy such an
// element gets a component separator behind it ("Koenig:"), which the
// reader takes as a composite whose first component holds the value: each
// value then lands once, where it stands.
#ifndef EDI_COMPOSITEPAD_H
#define EDI_COMPOSITEPAD_H

#include <map>
#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

// The working copy `text` with a component separator behind every element
// that has none where every tag node of its segment's tag in `config` has a
// composite.  An element holding a released component separator is left
// as it is (the reader keeps it whole).  `count` receives the number of
// elements changed.
std::string padcomposites(const std::string &text, const datatree_t *config, size_t &count);

// Per segment tag, the element positions (1 = first behind the tag) that
// are composite in every tag node of that tag: what padcomposites looks
// up, taken from a configuration once for all the messages read with it.
using CompositePlaces = std::map<std::string, std::vector<bool>>;
CompositePlaces compositeplaces(const datatree_t *config);
std::string padcomposites(const std::string &text, const CompositePlaces &places,
                          size_t &count);

}  // namespace edi

#endif
