#pragma once
// Writes a ViewDocument as the array's XML result, through libxml2 so that
// the output is always well formed and every value is escaped.

#include <ostream>
#include <string>

#include "ViewDocument.h"

namespace arraysim {

class XmlDocWriter {
public:
    // The whole document as text. Throws std::runtime_error when libxml2
    // refuses a value (e.g. text that is not UTF-8).
    static std::string ToString(const ViewDocument& doc);

    // The same text written to out as it is made, so that a reader can
    // start on a large view at once. Every value is checked first: on a
    // refusal (the same std::runtime_error) nothing has been written.
    static void Write(const ViewDocument& doc, std::ostream& out);
};

}  // namespace arraysim
