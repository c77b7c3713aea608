#ifndef ORVSMIS_STORAGE_RECORDS_TEST_SUPPORT_H
#define ORVSMIS_STORAGE_RECORDS_TEST_SUPPORT_H

// Builders for result documents in the shape the array's tools write; the
// test program runs in a private root ($SMIS_ROOT) set up once.

#include <string>
#include <utility>
#include <vector>

namespace storagetest {

typedef std::vector<std::pair<std::string, std::string>> Units;

inline std::string Section(const std::string& name, const Units& units) {
    std::string text = "<SECTION name=\"" + name + "\">\n";
    for (const auto& u : units) text += "<UNIT name=\"" + u.first + "\">" + u.second + "</UNIT>\n";
    return text + "</SECTION>\n";
}

inline std::string Object(const std::string& name, const std::string& sections) {
    return "<OBJECT name=\"" + name + "\">\n" + sections + "</OBJECT>\n";
}

inline std::string Chapter(const std::string& name, const std::string& objects) {
    return "<CHAPTER name=\"" + name + "\">\n" + objects + "</CHAPTER>\n";
}

// A document with the array chapter for `wwn` first, then `chapters`.
inline std::string Document(const std::string& wwn, const std::string& chapters) {
    std::string array = Chapter("Disk Array",
                                Object("Disk Array", Section("Disk Array Detail Information",
                                                             {{"Disk Array Name", "Array01"},
                                                              {"World Wide Name", wwn}})));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<REQUEST>\n<CMD_REQUEST>\n<RETURN_CODE>0</RETURN_CODE>\n" +
           array + chapters + "</CMD_REQUEST>\n</REQUEST>\n";
}

// The private root of this test program.
const std::string& TestRoot();

}  // namespace storagetest

#endif
