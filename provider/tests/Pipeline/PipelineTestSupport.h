#ifndef ORVSMIS_PIPELINE_TEST_SUPPORT_H
#define ORVSMIS_PIPELINE_TEST_SUPPORT_H

// Builders for result documents in the shape the array's tools write, and the
// private root the pipeline tests run in.

#include <string>
#include <utility>
#include <vector>

namespace pipelinetest {

typedef std::vector<std::pair<std::string, std::string>> Units;

inline std::string Unit(const std::string& name, const std::string& value) {
    return "<UNIT name=\"" + name + "\">" + value + "</UNIT>\n";
}

inline std::string Section(const std::string& name, const Units& units) {
    std::string text = "<SECTION name=\"" + name + "\">\n";
    for (const auto& u : units) text += Unit(u.first, u.second);
    return text + "</SECTION>\n";
}

inline std::string Object(const std::string& name, const std::string& sections) {
    return "<OBJECT name=\"" + name + "\">\n" + sections + "</OBJECT>\n";
}

inline std::string Chapter(const std::string& name, const std::string& objects) {
    return "<CHAPTER name=\"" + name + "\">\n" + objects + "</CHAPTER>\n";
}

// A whole document; root "REQUEST" wraps CMD_REQUEST, "CMD_REQUEST" stands
// alone, anything else is used as the root's name around CMD_REQUEST.
inline std::string Document(const std::string& chapters, const std::string& returnCode = "0",
                            const std::string& root = "REQUEST") {
    std::string body = "<CMD_REQUEST>\n";
    if (!returnCode.empty()) body += "<RETURN_CODE>" + returnCode + "</RETURN_CODE>\n";
    body += chapters + "</CMD_REQUEST>\n";
    std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    if (root == "CMD_REQUEST") return head + body;
    return head + "<" + root + ">\n" + body + "</" + root + ">\n";
}

inline std::string ArraySection(const std::string& wwn, const std::string& state = "ready",
                                const std::string& monitoring = "running") {
    return Section("Disk Array Detail Information", {{"Disk Array Name", "Array01"},
                                                     {"Resource State", state},
                                                     {"Monitoring", monitoring},
                                                     {"Vendor ID", "ORV"},
                                                     {"Product ID", "ORV-M3000"},
                                                     {"Serial Number", "0000001"},
                                                     {"World Wide Name", wwn}});
}

inline std::string HdObject(const std::string& number, const std::string& state,
                            const std::string& protocol = "FC") {
    return Object("HD", Section("Host Director Information",
                                {{"Number(h)", number}, {"State", state}, {"Protocol", protocol}}));
}

// An array chapter and a controller chapter with the given HD states
// (numbers 00, 01, ...).
inline std::string ViewDocument(const std::string& wwn, const std::vector<std::string>& hdStates,
                                const std::string& arrayState = "ready") {
    std::string hds;
    for (size_t i = 0; i < hdStates.size(); ++i) hds += HdObject("0" + std::to_string(i), hdStates[i]);
    std::string chapters = Chapter("Disk Array", Object("Disk Array", ArraySection(wwn, arrayState)));
    if (!hdStates.empty()) chapters += Chapter("Controller", hds);
    return Document(chapters);
}

// The private root ($SMIS_ROOT) of this test program.
const std::string& TestRoot();

// Writes text to a file below the root and returns its full path.
std::string WriteRootFile(const std::string& relative, const std::string& text);

std::string ReadFile(const std::string& path);

}  // namespace pipelinetest

#endif

#include "RawData.h"

namespace pipelinetest {

// A record of any type code: `value` is its content, `identity` an extra
// identity field (like a controller's number).
class TestRecord : public orvsmis::RawData {
public:
    std::string value;
    std::string identity;

    TestRecord(int t, const std::string& array, const std::string& key, const std::string& v = "",
               const std::string& id = "")
        : orvsmis::RawData(t), value(v), identity(id) {
        arrayId = array;
        name = key;
    }

    bool HasChanged(const orvsmis::RawData* other) const override {
        const TestRecord* o = dynamic_cast<const TestRecord*>(other);
        return o == nullptr || o->value != value;
    }
    bool IsEqual(const orvsmis::RawData* other) const override {
        const TestRecord* o = dynamic_cast<const TestRecord*>(other);
        return o != nullptr && orvsmis::RawData::IsEqual(other) && o->identity == identity;
    }
    void Copy(const orvsmis::RawData* other) override {
        orvsmis::RawData::Copy(other);
        const TestRecord* o = dynamic_cast<const TestRecord*>(other);
        if (o != nullptr) {
            value = o->value;
            identity = o->identity;
        }
    }

    // A new record with one reference, as the fillers hand them out.
    static TestRecord* Make(int t, const std::string& array, const std::string& key, const std::string& v = "",
                            const std::string& id = "") {
        TestRecord* r = new TestRecord(t, array, key, v, id);
        r->AddRef();
        return r;
    }
};

}  // namespace pipelinetest
