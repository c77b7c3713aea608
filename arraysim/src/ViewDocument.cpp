#include "ViewDocument.h"

namespace arraysim {

ViewSection& ViewObject::AddSection(std::string sectionName) {
    sections.push_back(ViewSection{std::move(sectionName), {}});
    return sections.back();
}

ViewObject& ViewChapter::AddObject(std::string objectName) {
    objects.push_back(ViewObject{std::move(objectName), {}});
    return objects.back();
}

ViewChapter& ViewDocument::AddChapter(std::string chapterName) {
    m_chapters.push_back(ViewChapter{std::move(chapterName), {}});
    return m_chapters.back();
}

void ViewDocument::SetFailure(int returnCode, std::string messageId, std::string messageContent) {
    m_returnCode = returnCode;
    m_messageId = std::move(messageId);
    m_messageContent = std::move(messageContent);
    // A failed run reports nothing but its code and message.
    m_chapters.clear();
}

}  // namespace arraysim
