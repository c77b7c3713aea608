#pragma once
// The subject file of the query tools: one line per volume, "ld:" and the
// volume's name (the module writes it before each query).

#include <string>
#include <vector>

namespace arraysim {

class SubjectFile {
public:
    // The names, in file order. Blank lines are skipped; a line in any other
    // form, an empty name, an unreadable or empty file is a ViewError.
    static std::vector<std::string> Read(const std::string& path);

    // The same from text already read (the path is used in messages only).
    static std::vector<std::string> Parse(const std::string& text, const std::string& path);

    // Where the file given on the command line lies: the module names fixed
    // absolute paths (/opt/pegasus/...), which stand under `root` when a root
    // is given (SMIS_ROOT); a path already inside the root, and a relative
    // path, stand as they are.
    static std::string Locate(const std::string& path, const char* root);
};

}  // namespace arraysim
