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
};

}  // namespace arraysim
