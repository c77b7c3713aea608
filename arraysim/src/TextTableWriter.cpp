#include "TextTableWriter.h"

#include <algorithm>
#include <sstream>

namespace arraysim {

void TextTableWriter::Write(const ViewDocument& doc, std::ostream& out) {
    if (doc.ReturnCode() != 0) {
        out << doc.MessageId() << ' ' << doc.MessageContent() << '\n';
        return;
    }
    for (const ViewChapter& chapter : doc.Chapters()) {
        out << "--- " << chapter.name << " ---\n";
        for (const ViewObject& object : chapter.objects) {
            out << '\n' << "[" << object.name << "]\n";
            for (const ViewSection& section : object.sections) {
                out << "  " << section.name << '\n';
                size_t width = 0;
                for (const ViewUnit& unit : section.units) width = std::max(width, unit.name.size());
                for (const ViewUnit& unit : section.units) {
                    out << "    " << unit.name << std::string(width - unit.name.size(), ' ') << " : "
                        << unit.value << '\n';
                }
            }
        }
        out << '\n';
    }
}

std::string TextTableWriter::ToString(const ViewDocument& doc) {
    std::ostringstream out;
    Write(doc, out);
    return out.str();
}

}  // namespace arraysim
