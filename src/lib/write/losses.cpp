#include "write/losses.h"

#include <string.h>

#include <algorithm>
#include <unordered_map>

#include "findings/report.h"

namespace edi {

namespace {

// A root child of the library's own (`#envelope`, `#group`): the library
// writes it, not the module's walk.
bool libraryowned(const datatree_t *tp)
{
    return tp->xmltag != nullptr && tp->xmltag[0] == '#';
}

std::string plural(size_t n, const char *one, const char *many)
{
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

// The segment or record a path names: the last step that is a tag node,
// without its "[k]"; EDIFACT: its three letters, VDA: the record type.
std::string tagof(const std::string &path, Writer w)
{
    size_t end = path.size();
    while (end > 0) {
        size_t start = path.rfind('.', end - 1);
        start = start == std::string::npos ? 0 : start + 1;
        if (path[start] == '$') {
            std::string step = path.substr(start + 1, end - start - 1);
            step = step.substr(0, step.find('['));
            if (w == Writer::vda)
                return step.size() > 1 && step[0] == 'S' ? step.substr(1) : step;
            return step.substr(0, 3);
        }
        if (start == 0)
            break;
        end = start - 1;
    }
    return "";
}

}  // namespace

std::vector<Unwritten> leftout(const datatree_t *head, const datatree_t *config, Writer w)
{
    if (writesall(head, config, w))
        return {};
    std::vector<Unwritten> all = unwritten(head, writerreads(head, config, w));
    std::vector<Unwritten> lost;
    lost.reserve(all.size());
    for (Unwritten &u : all)
        if (u.top == nullptr || !libraryowned(u.top))
            lost.push_back(std::move(u));
    return lost;
}

std::vector<ValueChange> vdachanges(const datatree_t *head, const datatree_t *config,
                                    const char *charset)
{
    std::vector<Written> written = writerreads(head, config, Writer::vda);
    std::unordered_map<const datatree_t *, const datatree_t *> by;
    for (const Written &w : written)
        by.emplace(w.node, w.config);
    // Named by their paths, in document order.
    std::vector<ValueChange> out;
    for (const Unwritten &u : unwritten(head, {})) {
        auto at = by.find(u.node);
        if (at == by.end())
            continue;
        bool cut = false;
        std::string why = valuechange(u.node->data, at->second, charset, cut);
        if (!why.empty())
            out.push_back(ValueChange{u.path + ": " + why, cut});
    }
    return out;
}

bool reportleftout(const std::vector<Unwritten> &lost, Writer w, const Settings &opt,
                   const std::function<int(const datatree_t *)> &number, const std::string &hint,
                   Report &rep)
{
    if (lost.empty())
        return false;
    const bool fail = !opt.keepgoing;
    const edi_severity severity = fail ? EDI_SEVERITY_ERROR : EDI_SEVERITY_WARNING;
    const std::string &name = opt.name;
    const size_t named = std::min(lost.size(), kNamedFindings);
    for (size_t i = 0; i < named; i++) {
        const Unwritten &u = lost[i];
        int message = w == Writer::edifact && u.top != nullptr ? number(u.top) : 0;
        std::string where = message > 0 ? "message " + std::to_string(message) + ", " +
                                              (u.inner.empty() ? u.path : u.inner)
                                        : u.path;
        Finding &f = rep.add(EDI_FINDING_LEFT_OUT, severity, name,
                             where + " " + quoted(u.value.c_str()) +
                                 ": the configuration has no place for this value, so it " +
                                 (fail ? "would not be written" : "is not written"));
        f.message = message;
        f.tag = tagof(u.path, w);
        f.element = message > 0 && !u.inner.empty() ? u.inner : u.path;
        f.dataelement = u.name;
        f.value = u.value;
        f.verbose = i >= kShownFindings ? Finding::detail : 0;
    }
    if (lost.size() > kShownFindings)
        rep.add(EDI_FINDING_NOTE, severity, name,
                "... and " + std::to_string(lost.size() - kShownFindings) + " more")
            .verbose = Finding::summary;
    if (lost.size() > named)
        rep.add(EDI_FINDING_NOTE, severity, name,
                "... and " + std::to_string(lost.size() - named) + " more not named one by one")
            .verbose = Finding::detail;
    const char *what = w == Writer::edifact ? "interchange" : "file";
    std::string sentence =
        plural(lost.size(), "value", "values") + " of the tree " +
        (lost.size() == 1 ? "has" : "have") +
        " no place in the configuration the writer walks (no element or field of that name "
        "on that path, or no loop instance of that number)";
    if (fail) {
        sentence += ", so " + std::string(lost.size() == 1 ? "it" : "they") +
                    " would not be written: give the configuration that describes the tree (" +
                    (w == Writer::edifact
                         ? "the outbound form of the one it was read with, or --message with "
                           "its directory"
                         : "the one it was made with") +
                    "), or --keep-going to write the " + what + " without " +
                    (lost.size() == 1 ? "it" : "them") + ".";
    } else {
        sentence += "; the " + std::string(what) + " is written without " +
                    (lost.size() == 1 ? "it" : "them") + " (--keep-going).";
    }
    if (!hint.empty())
        sentence += " " + hint;
    if (fail)
        rep.fail(name, sentence);
    else
        rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_WARNING, name, sentence);
    return fail;
}

bool reportchanges(const std::vector<ValueChange> &changes, Writer w, const Settings &opt,
                   Report &rep)
{
    if (changes.empty())
        return false;
    size_t cuts = 0;
    for (const ValueChange &c : changes)
        cuts += c.cut ? 1 : 0;
    const bool fail = cuts > 0 && !opt.keepgoing;
    // Every value is a finding; past the first 20 the edi command shows
    // only how many more there are.
    const std::string &name = opt.name;
    for (size_t i = 0; i < changes.size(); i++) {
        Finding &f = rep.add(EDI_FINDING_CHANGED,
                             changes[i].cut && fail ? EDI_SEVERITY_ERROR : EDI_SEVERITY_WARNING,
                             name, changes[i].line);
        f.verbose = i >= kShownFindings ? Finding::detail : 0;
    }
    if (changes.size() > kShownFindings)
        rep.add(EDI_FINDING_NOTE, fail ? EDI_SEVERITY_ERROR : EDI_SEVERITY_WARNING, name,
                "... and " + std::to_string(changes.size() - kShownFindings) + " more")
            .verbose = Finding::summary;
    const std::string rules =
        w == Writer::edifact
            ? "the configuration's lengths rule what the writer writes (control characters "
              "become blanks)"
            : "the configuration's field lengths and the writer's character set rule what it "
              "writes";
    const std::string longer = w == Writer::edifact ? "elements" : "fields";
    if (!fail) {
        rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name,
                plural(changes.size(), "value is", "values are") +
                    " written other than the tree holds them: " + rules +
                    "; change the values in the tree, or give a configuration with longer " +
                    longer + ".");
        return false;
    }
    rep.fail(name, plural(cuts, "value", "values") + " would be cut" +
                       (cuts < changes.size()
                            ? " (of " + std::to_string(changes.size()) +
                                  " written other than the tree holds them)"
                            : "") +
                       ": " + rules + ", and a cut value loses its end; change the values in the "
                       "tree, give a configuration with longer " + longer +
                       ", or --keep-going to write them cut.");
    return true;
}

std::string roothint(const datatree_t *tree, const datatree_t *config)
{
    if (tree == nullptr || config == nullptr || tree->xmltag == nullptr ||
        config->xmltag == nullptr || strcmp(tree->xmltag, config->xmltag) == 0)
        return "";
    return std::string("The tree's root is named '") + tree->xmltag +
           "' and the configuration's '" + config->xmltag +
           "': the writer finds every value by its path from the root.";
}

}  // namespace edi
