// Runs every folder under tests/cases as one test: the folder's `cmd` line
// is run by the shell in a temporary copy of the folder, in a child process
// (so module state never carries over), and the exit code, stdout, stderr and
// every other file named in expected/ are compared with what it produced.
// EDIPROT_REGENERATE=1 writes the produced results into expected/ instead,
// printing the difference it accepts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>
#include <cctype>
#include <cstdio>

namespace fs = std::filesystem;

namespace {

const fs::path kCases = EDIPROT_CASES;

std::string readAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void replaceAll(std::string& s, const std::string& from, const std::string& to) {
  for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
    s.replace(at, from.size(), to);
}

std::string shellQuoted(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

// The command line with its variables expanded; `edi` is the built program
// wherever the line names it (its folder comes first in PATH).
std::string expandCommand(std::string cmd) {
  while (!cmd.empty() && (cmd.back() == '\n' || cmd.back() == '\r')) cmd.pop_back();
  replaceAll(cmd, "${CONFIGS}", EDIPROT_CONFIGS);
  replaceAll(cmd, "${CORPUS}", EDIPROT_CORPUS);
  replaceAll(cmd, "${SAMPLES}", EDIPROT_SAMPLES);
  replaceAll(cmd, "${SCRIPTS}", EDIPROT_SCRIPTS);
  const std::string bindir = fs::path(EDI_PROGRAM).parent_path().string();
  return "export PATH=" + shellQuoted(bindir) + ":\"$PATH\"; " + cmd;
}

// `env` holds VAR=value lines; they are exported to every command of the
// line.
std::string environmentPrefix(const fs::path& file) {
  std::string prefix;
  if (!fs::exists(file)) return prefix;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.find('=') == std::string::npos) continue;
    prefix += "export " + shellQuoted(line) + "; ";
  }
  return prefix;
}

std::string unifiedDiff(const fs::path& expected, const fs::path& actual) {
  std::string cmd = "diff -u " + shellQuoted(expected.string()) + " " + shellQuoted(actual.string()) + " 2>&1";
  std::string out;
  if (FILE* p = popen(cmd.c_str(), "r")) {
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    pclose(p);
  }
  return out;
}

// The reader reports "no sender" and "no doctype" behind its own source
// line number, which moves with any edit above the statement.  Such a line,
// alone or behind "FILE: ", has its number masked; nothing else is.
std::string maskLineNumbers(const std::string& text) {
  std::string out;
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    for (const std::string tail : {": no sender", ": no doctype"}) {
      if (line.size() <= tail.size() || line.compare(line.size() - tail.size(), tail.size(), tail) != 0) continue;
      const size_t digitsEnd = line.size() - tail.size();
      size_t digits = digitsEnd;
      while (digits > 0 && std::isdigit(static_cast<unsigned char>(line[digits - 1]))) digits--;
      if (digits < digitsEnd && (digits == 0 || (digits >= 2 && line.compare(digits - 2, 2, ": ") == 0)))
        line.replace(digits, digitsEnd - digits, "N");
    }
    out += line;
    if (end < text.size()) out += '\n';
    start = end + 1;
  }
  return out;
}

std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  if (fs::is_directory(kCases))
    for (const auto& e : fs::directory_iterator(kCases))
      if (fs::exists(e.path() / "cmd")) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, Case) {
  const fs::path source = kCases / GetParam();
  const fs::path work = fs::temp_directory_path() /
                        ("ediprot-case-" + GetParam() + "-" + std::to_string(getpid()));
  fs::remove_all(work);
  fs::create_directories(work);
  for (const auto& e : fs::directory_iterator(source))
    if (e.path().filename() != "expected")
      fs::copy(e.path(), work / e.path().filename(), fs::copy_options::recursive);
  const fs::path results = work / ".results";
  fs::create_directories(results);

  const std::string line = "cd " + shellQuoted(work.string()) + " && " +
                           environmentPrefix(source / "env") + "{ " +
                           expandCommand(readAll(source / "cmd")) + "; } >" + shellQuoted((results / "stdout").string()) + " 2>" +
                           shellQuoted((results / "stderr").string());
  const int status = std::system(line.c_str());
  ASSERT_TRUE(WIFEXITED(status)) << "command did not exit normally: " << line;
  std::ofstream(results / "exit") << WEXITSTATUS(status) << "\n";
  // Messages name inputs by the paths the variables stood for; put the
  // variables back, so that expectations hold in any checkout.
  for (const char* n : {"stdout", "stderr"}) {
    std::string text = readAll(results / n);
    replaceAll(text, EDIPROT_CORPUS, "${CORPUS}");
    replaceAll(text, EDIPROT_CONFIGS, "${CONFIGS}");
    replaceAll(text, EDIPROT_SAMPLES, "${SAMPLES}");
    std::ofstream(results / n, std::ios::binary) << text;
  }

  // exit, stdout and stderr are always compared (a missing one means empty);
  // any other file in expected/ is an output the command must write.
  const fs::path expected = source / "expected";
  std::vector<std::string> names{"exit", "stdout", "stderr"};
  if (fs::is_directory(expected))
    for (const auto& e : fs::directory_iterator(expected)) {
      const std::string n = e.path().filename().string();
      if (std::find(names.begin(), names.end(), n) == names.end()) names.push_back(n);
    }
  const bool regenerate = std::getenv("EDIPROT_REGENERATE") != nullptr;
  for (const auto& n : names) {
    const bool produced = n == "exit" || n == "stdout" || n == "stderr";
    const fs::path actual = produced ? results / n : work / n;
    const fs::path want = expected / n;
    const std::string got = fs::exists(actual) ? readAll(actual) : std::string();
    const std::string had = fs::exists(want) ? readAll(want) : std::string();
    if (got == had) continue;
    if ((n == "stdout" || n == "stderr") && maskLineNumbers(got) == maskLineNumbers(had)) continue;
    const fs::path empty = results / ".empty";
    std::ofstream(empty).close();
    const std::string diff = unifiedDiff(fs::exists(want) ? want : empty, fs::exists(actual) ? actual : empty);
    if (regenerate) {
      std::cout << "accepting " << GetParam() << "/expected/" << n << ":\n" << diff;
      fs::create_directories(expected);
      std::ofstream(want, std::ios::binary) << got;
    } else {
      ADD_FAILURE() << GetParam() << ": " << n << " differs\n" << diff;
    }
  }
  if (!HasFailure()) fs::remove_all(work);
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
  std::string n = info.param;
  std::replace_if(n.begin(), n.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return n;
}

INSTANTIATE_TEST_SUITE_P(Cases, Golden, testing::ValuesIn(caseNames()), testName);

}  // namespace
