#pragma once
// Writes a ViewDocument as the plain text a person reads at the console:
// one block per object, one "name : value" line per unit, aligned.

#include <ostream>
#include <string>

#include "ViewDocument.h"

namespace arraysim {

class TextTableWriter {
public:
    static void Write(const ViewDocument& doc, std::ostream& out);
    static std::string ToString(const ViewDocument& doc);
};

}  // namespace arraysim
