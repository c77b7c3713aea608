#pragma once
// The result document of a view or query tool, as the array lays it out:
// chapters hold objects, objects hold sections, sections hold units
// (name and text). The same document is written as XML or as plain text.

#include <string>
#include <utility>
#include <vector>

namespace arraysim {

struct ViewUnit {
    std::string name;
    std::string value;
};

struct ViewSection {
    std::string name;
    std::vector<ViewUnit> units;

    // Appends one unit; returns the section so calls can be chained.
    ViewSection& Add(std::string unitName, std::string unitValue) {
        units.push_back(ViewUnit{std::move(unitName), std::move(unitValue)});
        return *this;
    }
};

struct ViewObject {
    std::string name;
    std::vector<ViewSection> sections;

    ViewSection& AddSection(std::string sectionName);
};

struct ViewChapter {
    std::string name;
    std::vector<ViewObject> objects;

    ViewObject& AddObject(std::string objectName);
};

class ViewDocument {
public:
    // Root element: "REQUEST" around "CMD_REQUEST" (the usual form), or
    // "CMD_REQUEST" alone, which the query tools may answer with.
    enum class Root { Request, CmdRequest };

    ViewChapter& AddChapter(std::string chapterName);

    // A failed run: the return code, and the message the tool gives with it.
    void SetFailure(int returnCode, std::string messageId, std::string messageContent);

    void SetRoot(Root root) { m_root = root; }
    Root GetRoot() const { return m_root; }
    int ReturnCode() const { return m_returnCode; }
    const std::string& MessageId() const { return m_messageId; }
    const std::string& MessageContent() const { return m_messageContent; }
    const std::vector<ViewChapter>& Chapters() const { return m_chapters; }

private:
    Root m_root = Root::Request;
    int m_returnCode = 0;
    std::string m_messageId;
    std::string m_messageContent;
    std::vector<ViewChapter> m_chapters;
};

}  // namespace arraysim
