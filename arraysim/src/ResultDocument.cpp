#include "ResultDocument.h"

#include <memory>
#include <stdexcept>

#include <libxml/tree.h>
#include <libxml/xmlsave.h>
#include <libxml/xmlstring.h>

#include "ViewFormat.h"

namespace arraysim {

namespace {

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// Messages are sentences: they begin with a capital letter.
std::string sentence(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

xmlNodePtr addUnit(xmlNodePtr parent, const char* name, const std::string& text) {
    xmlNodePtr unit = xmlNewChild(parent, nullptr, X("UNIT"), nullptr);
    if (unit == nullptr) throw std::runtime_error("cannot build the result document");
    xmlNewProp(unit, X("name"), X(name));
    // xmlNodeAddContent escapes the text as it stores it.
    xmlNodeAddContent(unit, X(text.c_str()));
    return unit;
}

}  // namespace

ResultDocument::ResultDocument(int returnCode, std::string messageId, std::string content, long long returnTimeSeconds)
    : m_returnCode(returnCode),
      m_messageId(std::move(messageId)),
      m_content(std::move(content)),
      m_returnTime(returnTimeSeconds) {}

ResultDocument ResultDocument::Success(const std::string& content, long long returnTimeSeconds) {
    return ResultDocument(0, "Vex00000", sentence(content), returnTimeSeconds);
}

ResultDocument ResultDocument::Failure(const CommandError& error, long long returnTimeSeconds) {
    return ResultDocument(error.ReturnCode(), error.MessageId(), sentence(error.what()), returnTimeSeconds);
}

std::string ResultDocument::Xml() const {
    // libxml2 would copy bytes that are no UTF-8 into the document unchecked.
    for (const std::string* text : {&m_messageId, &m_content})
        if (xmlCheckUTF8(X(text->c_str())) == 0) throw std::runtime_error("the message is not UTF-8 text");
    std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> doc(xmlNewDoc(X("1.0")), xmlFreeDoc);
    if (!doc) throw std::runtime_error("cannot build the result document");
    xmlNodePtr root = xmlNewNode(nullptr, X("REQUEST"));
    xmlDocSetRootElement(doc.get(), root);
    xmlNodePtr request = xmlNewChild(root, nullptr, X("CMD_REQUEST"), nullptr);
    const std::string code = std::to_string(m_returnCode);
    xmlNewChild(request, nullptr, X("RETURN_CODE"), X(code.c_str()));
    xmlNodePtr message = xmlNewChild(request, nullptr, X("RETURN_MSG"), nullptr);
    xmlNewProp(message, X("name"), X("Return Message"));
    addUnit(message, "message_id", m_messageId);
    addUnit(message, "message_content", m_content);
    addUnit(message, "return_time", ViewFormat::Time(m_returnTime));

    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpFormatMemoryEnc(doc.get(), &text, &size, "UTF-8", 1);
    if (text == nullptr) throw std::runtime_error("cannot write the result document (text not UTF-8?)");
    std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
    xmlFree(text);
    return result;
}

std::string ResultDocument::Text() const {
    return m_messageId + " " + m_content + "\n" + ViewFormat::Time(m_returnTime) + "\n";
}

int ResultDocument::Write(bool xml, std::ostream& out, std::ostream& err) const {
    if (xml) {
        std::string document;
        try {
            document = Xml();
        } catch (const std::exception&) {
            // A message libxml2 cannot carry (not UTF-8) must still give a document.
            const ResultDocument fallback(m_returnCode == 0 ? 1 : m_returnCode, "Vex19001",
                                          "the command's message could not be written", m_returnTime);
            out << fallback.Xml();
            out.flush();
            return fallback.ReturnCode();
        }
        out << document;
    } else if (m_returnCode == 0) {
        out << Text();
    } else {
        err << Text();
    }
    out.flush();
    return m_returnCode;
}

}  // namespace arraysim
