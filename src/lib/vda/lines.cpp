#include "vda/lines.h"

namespace edi {

std::vector<std::string> workinglines(const std::string &bytes, bool raw,
                                      std::vector<std::string> &changes)
{
    std::string text = bytes;
    if (!raw && text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        text.erase(0, 3);
        changes.push_back("byte-order mark taken off");
    }
    std::vector<std::string> lines;
    if (!raw && text.find_first_of("\r\n") == std::string::npos && text.size() > kRecordWidth) {
        for (size_t i = 0; i < text.size(); i += kRecordWidth)
            lines.push_back(text.substr(i, kRecordWidth) + "\n");
        changes.push_back("no line ends: read as " + std::to_string(lines.size()) +
                          " records of 128 characters");
        return lines;
    }
    size_t start = 0;
    while (start < text.size()) {
        size_t nl = text.find('\n', start);
        size_t end = nl == std::string::npos ? text.size() : nl + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    if (!raw && !lines.empty() && lines.back().back() != '\n') {
        lines.back() += "\n";
        changes.push_back("line end added behind the last line");
    }
    return lines;
}

bool blankline(const std::string &l)
{
    return l.find_first_not_of(" \r\n\x1a") == std::string::npos;
}

std::string content(const std::string &line)
{
    size_t n = line.size();
    if (n > 0 && line[n - 1] == '\n')
        n--;
    if (n > 0 && line[n - 1] == '\r')
        n--;
    return line.substr(0, n);
}

}  // namespace edi
