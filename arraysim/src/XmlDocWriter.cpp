#include "XmlDocWriter.h"

#include <libxml/xmlwriter.h>

#include <ctime>
#include <memory>
#include <ostream>
#include <stdexcept>

namespace arraysim {
namespace {

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
const xmlChar* X(const std::string& text) { return X(text.c_str()); }

// XML 1.0 has no room for bytes that are not UTF-8, nor for most control
// characters; such a value is refused rather than written damaged.
void CheckText(const std::string& text) {
    for (unsigned char c : text) {
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            throw std::runtime_error("cannot write the XML document: a value holds control characters");
    }
    if (!xmlCheckUTF8(X(text)))
        throw std::runtime_error("cannot write the XML document: a value is not UTF-8 text");
}

// Owns the writer and its buffer; every call is checked so that a refused
// value ends the run instead of leaving a half-written document.
class Writer {
public:
    // Into memory, read back by Finish.
    Writer() : m_buffer(xmlBufferCreate(), xmlBufferFree) {
        if (!m_buffer) throw std::runtime_error("cannot allocate the XML buffer");
        m_writer = xmlNewTextWriterMemory(m_buffer.get(), 0);
        if (!m_writer) throw std::runtime_error("cannot create the XML writer");
    }
    // Onto a stream, in the pieces libxml2 flushes as the document grows.
    explicit Writer(std::ostream& out) : m_buffer(nullptr, xmlBufferFree) {
        xmlOutputBufferPtr output = xmlOutputBufferCreateIO(
            [](void* context, const char* data, int length) {
                std::ostream& stream = *static_cast<std::ostream*>(context);
                stream.write(data, length);
                return stream ? length : -1;
            },
            nullptr, &out, nullptr);
        if (!output) throw std::runtime_error("cannot create the XML output");
        m_writer = xmlNewTextWriter(output);  // owns output from here on
        if (!m_writer) throw std::runtime_error("cannot create the XML writer");
    }
    ~Writer() {
        if (m_writer) xmlFreeTextWriter(m_writer);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void Check(int rc, const char* what) {
        if (rc < 0) throw std::runtime_error(std::string("cannot write the XML document: ") + what);
    }
    void Start(const char* element) { Check(xmlTextWriterStartElement(m_writer, X(element)), element); }
    void StartNamed(const char* element, const std::string& name) {
        CheckText(name);
        Start(element);
        Check(xmlTextWriterWriteAttribute(m_writer, X("name"), X(name)), "name attribute");
    }
    void End() { Check(xmlTextWriterEndElement(m_writer), "end of element"); }
    void Text(const std::string& text) {
        CheckText(text);
        Check(xmlTextWriterWriteString(m_writer, X(text)), "text");
    }
    void Element(const char* element, const std::string& text) {
        Start(element);
        Text(text);
        End();
    }
    void NamedElement(const char* element, const std::string& name, const std::string& text) {
        StartNamed(element, name);
        if (!text.empty()) Text(text);
        End();
    }
    xmlTextWriterPtr Raw() { return m_writer; }

    void EndDocument() {
        Check(xmlTextWriterEndDocument(m_writer), "end of document");
        Check(xmlTextWriterFlush(m_writer), "output");
        xmlFreeTextWriter(m_writer);
        m_writer = nullptr;
    }
    std::string Finish() {
        EndDocument();
        return std::string(reinterpret_cast<const char*>(xmlBufferContent(m_buffer.get())),
                           static_cast<size_t>(xmlBufferLength(m_buffer.get())));
    }

private:
    std::unique_ptr<xmlBuffer, void (*)(xmlBufferPtr)> m_buffer;
    xmlTextWriterPtr m_writer = nullptr;
};

std::string ReturnTime() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &local);
    return text;
}

// Every name and value the document holds, checked as the writer would.
void CheckAll(const ViewDocument& doc) {
    CheckText(doc.MessageId());
    CheckText(doc.MessageContent());
    for (const ViewChapter& chapter : doc.Chapters()) {
        CheckText(chapter.name);
        for (const ViewObject& object : chapter.objects) {
            CheckText(object.name);
            for (const ViewSection& section : object.sections) {
                CheckText(section.name);
                for (const ViewUnit& unit : section.units) {
                    CheckText(unit.name);
                    CheckText(unit.value);
                }
            }
        }
    }
}

void Emit(const ViewDocument& doc, Writer& w) {
    w.Check(xmlTextWriterSetIndent(w.Raw(), 1), "indent");
    w.Check(xmlTextWriterSetIndentString(w.Raw(), X(" ")), "indent");
    w.Check(xmlTextWriterStartDocument(w.Raw(), "1.0", "UTF-8", nullptr), "declaration");
    if (doc.GetRoot() == ViewDocument::Root::Request) w.Start("REQUEST");
    w.Start("CMD_REQUEST");
    w.Element("RETURN_CODE", std::to_string(doc.ReturnCode()));
    if (doc.ReturnCode() != 0) {
        w.Start("RETURN_MSG");
        w.NamedElement("UNIT", "message_id", doc.MessageId());
        w.NamedElement("UNIT", "message_content", doc.MessageContent());
        w.NamedElement("UNIT", "return_time", ReturnTime());
        w.End();
    }
    for (const ViewChapter& chapter : doc.Chapters()) {
        w.StartNamed("CHAPTER", chapter.name);
        for (const ViewObject& object : chapter.objects) {
            w.StartNamed("OBJECT", object.name);
            for (const ViewSection& section : object.sections) {
                w.StartNamed("SECTION", section.name);
                for (const ViewUnit& unit : section.units) w.NamedElement("UNIT", unit.name, unit.value);
                w.End();
            }
            w.End();
        }
        w.End();
    }
    w.End();  // CMD_REQUEST
    if (doc.GetRoot() == ViewDocument::Root::Request) w.End();
}

}  // namespace

std::string XmlDocWriter::ToString(const ViewDocument& doc) {
    Writer w;
    Emit(doc, w);
    return w.Finish();
}

void XmlDocWriter::Write(const ViewDocument& doc, std::ostream& out) {
    // A value XML cannot carry is refused before the first byte goes out.
    CheckAll(doc);
    Writer w(out);
    Emit(doc, w);
    w.EndDocument();
}

}  // namespace arraysim
