#include "SubjectFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "ViewError.h"

namespace arraysim {

std::vector<std::string> SubjectFile::Read(const std::string& path) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec))
        throw ViewError(ViewError::kFileError, "the file " + path + " is a directory");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ViewError(ViewError::kFileError, "cannot open the file " + path);
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw ViewError(ViewError::kFileError, "cannot read the file " + path);
    return Parse(text.str(), path);
}

std::string SubjectFile::Locate(const std::string& path, const char* root) {
    if (root == nullptr || *root == '\0' || path.empty() || path[0] != '/') return path;
    std::string base(root);
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    if (base == "/") return path;
    if (path.compare(0, base.size(), base) == 0 && (path.size() == base.size() || path[base.size()] == '/'))
        return path;
    return base + path;
}

std::vector<std::string> SubjectFile::Parse(const std::string& text, const std::string& path) {
    std::vector<std::string> names;
    std::istringstream lines(text);
    std::string line;
    int number = 0;
    while (std::getline(lines, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        const std::string where = path + " line " + std::to_string(number);
        if (line.compare(0, 3, "ld:") != 0)
            throw ViewError(ViewError::kFileError, "invalid line (expected ld:<name>) in " + where);
        std::string name = line.substr(3);
        if (name.empty()) throw ViewError(ViewError::kFileError, "missing volume name in " + where);
        names.push_back(name);
    }
    if (names.empty()) throw ViewError(ViewError::kFileError, "no volume named in " + path);
    return names;
}

}  // namespace arraysim
