#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "LibXML2Filler.h"
#include "PipelineTestSupport.h"
#include "RawData.h"
#include "XMLParser.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

// Feeds text in pieces of `piece` bytes; the last piece carries flag 1.
// Returns what the last piece gave.
bool feed(XMLParser& parser, const std::string& text, size_t piece) {
    bool last = false;
    size_t at = 0;
    do {
        size_t n = std::min(piece, text.size() - at);
        int flag = at + n >= text.size() ? 1 : 0;
        last = parser.LoadChunk(text.data() + at, static_cast<int>(n), flag);
        at += n;
    } while (at < text.size());
    return last;
}

void expectNothingFound(XMLParser& parser) {
    std::vector<RawData*> out;
    for (int type : {RAWDATA_ARRAY, RAWDATA_DAC, RAWDATA_DE}) {
        EXPECT_LE(parser.QueryData(out, type), 0) << "type " << type;
    }
    EXPECT_TRUE(out.empty());
    ReleaseRawDataList(out);
}

}  // namespace

TEST(XmlLoading, DocumentArrivingInSmallChunksIsParsedWhole) {
    XMLParser parser;
    std::string doc = ViewDocument("2000AB", {"ready", "ready"});
    EXPECT_TRUE(feed(parser, doc, 7));
    ASSERT_TRUE(parser.GetReturnCode());
    std::vector<RawData*> out;
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 1);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0]->name, "2000AB");
    EXPECT_EQ(out[0]->GetRefCount(), 1u);
    // The document stays loaded for the next type.
    EXPECT_EQ(parser.QueryData(out, RAWDATA_DAC), 2);
    EXPECT_EQ(out.size(), 3u);
    ReleaseRawDataList(out);
}

TEST(XmlLoading, BadDocumentsFailCleanlyOnTheLastChunk) {
    const std::string good = ViewDocument("2000AB", {"ready"});
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"garbage", "this is not xml at all\n\x01\x02"},
        {"nothing", ""},
        {"text before the xml", "Vexview: warning, slow answer\n" + good},
        {"truncated", good.substr(0, good.size() / 2)},
        {"wrong root", Document(Chapter("Disk Array", ""), "0", "RESULT")},
        {"a second root after the first", good + "<extra/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        XMLParser parser;
        // Whatever the document, the last chunk is accepted; its outcome is
        // read from the return code.
        EXPECT_TRUE(feed(parser, c.second, 16));
        EXPECT_TRUE(parser.IsLoaded());
        EXPECT_FALSE(parser.GetReturnCode());
        expectNothingFound(parser);
        // The parser is usable again after Unload.
        parser.Unload();
        EXPECT_TRUE(feed(parser, good, 64));
        EXPECT_TRUE(parser.GetReturnCode());
    }
    XMLParser empty;
    EXPECT_TRUE(empty.LoadChunk(nullptr, 0, 1));
    EXPECT_FALSE(empty.GetReturnCode());
}

TEST(XmlLoading, NonZeroReturnCodeParsesButReportsFailure) {
    XMLParser parser;
    std::string doc = Document(Chapter("Disk Array", Object("Disk Array", ArraySection("2000CD"))), "3");
    feed(parser, doc, 4096);
    EXPECT_FALSE(parser.GetReturnCode());
    // The fillers still work on a chunk-loaded document.
    std::vector<RawData*> out;
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 1);
    ReleaseRawDataList(out);

    std::string path = WriteRootFile("docs/rc3.xml", doc);
    EXPECT_FALSE(parser.LoadXMLFile(path.c_str()));
    EXPECT_FALSE(parser.GetReturnCode());
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), -1);
    EXPECT_TRUE(out.empty());

    // Without RETURN_CODE the document counts as failed too.
    parser.Unload();
    feed(parser, Document(Chapter("Disk Array", Object("Disk Array", ArraySection("2000CD"))), ""), 4096);
    EXPECT_TRUE(parser.IsLoaded());
    EXPECT_FALSE(parser.GetReturnCode());
}

TEST(XmlLoading, FileLoading) {
    XMLParser parser;
    std::string good = WriteRootFile("docs/good.xml", ViewDocument("2000EF", {"ready", "ready"}));
    ASSERT_TRUE(parser.LoadXMLFile(good.c_str()));
    EXPECT_EQ(parser.GetFilePath(), good);
    std::vector<RawData*> out;
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 1);
    ReleaseRawDataList(out);

    for (const std::string& bad : {WriteRootFile("docs/bad.xml", "<REQUEST><CMD_REQUEST>"),
                                   WriteRootFile("docs/empty.xml", ""), TestRoot() + "/docs/missing.xml",
                                   WriteRootFile("docs/root.xml", Document("", "0", "RESULT"))}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(parser.LoadXMLFile(bad.c_str()));
        EXPECT_FALSE(parser.GetReturnCode());
        EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), -1);
    }
    parser.Unload();
    EXPECT_FALSE(parser.IsLoaded());
    EXPECT_EQ(parser.GetFiller(), nullptr);
    EXPECT_TRUE(parser.GetFilePath().empty());
}

TEST(XmlLoading, CmdRequestRootIsValidButAbsolutePathsFindNothing) {
    XMLParser parser;
    feed(parser, Document(Chapter("Disk Array", Object("Disk Array", ArraySection("2000AA"))), "0", "CMD_REQUEST"),
         4096);
    EXPECT_TRUE(parser.GetReturnCode());
    EXPECT_EQ(LibXML2Filler::cmdReturnCodePath, "/CMD_REQUEST/RETURN_CODE");
    std::vector<RawData*> out;
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 0);
    EXPECT_EQ(parser.QueryData(out, RAWDATA_DAC), -1);
    EXPECT_TRUE(out.empty());
}

TEST(XmlLoading, QueriesThatCannotBeAnswered) {
    XMLParser parser;
    std::vector<RawData*> out;
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), -1);  // nothing loaded
    EXPECT_FALSE(parser.GetReturnCode());
    feed(parser, Document(""), 4096);
    EXPECT_TRUE(parser.GetReturnCode());
    EXPECT_EQ(parser.QueryData(out, 10), -1);
    EXPECT_EQ(parser.QueryData(out, -1), -1);
    // A good document without chapters gives no record of any type.
    EXPECT_EQ(parser.QueryData(out, RAWDATA_ARRAY), 0);
    EXPECT_EQ(parser.QueryData(out, RAWDATA_DAC), -1);
    EXPECT_EQ(parser.QueryData(out, RAWDATA_DE), 0);
    EXPECT_TRUE(out.empty());
}

TEST(XmlLoading, NodeSetCursorsWalkElementsAndTextNodes) {
    LibXML2Filler filler;
    std::string doc = Document(Chapter("Pair Copy State", Object("Pair Copy State",
                                                                 "<SECTION>\n<UNIT>x</UNIT></SECTION>\n" +
                                                                     Section("Pair", {{"MV", "0010"}}))),
                               "0", "CMD_REQUEST");
    ASSERT_TRUE(filler.LoadChunk(doc.data(), static_cast<int>(doc.size()), 1));
    EXPECT_EQ(filler.GetRootNodeName(), "CMD_REQUEST");
    EXPECT_EQ(filler.GetValueFromXPath("/CMD_REQUEST/RETURN_CODE"), "0");
    EXPECT_EQ(filler.GetValueFromXPath("/CMD_REQUEST/NOTHING"), "");

    NodeSetGC gc;
    std::list<NodeSet*> objects = filler.GetNodeSetsFromXPath("/CMD_REQUEST/CHAPTER/OBJECT", gc);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_TRUE(objects.front()->HasValue("Pair Copy State"));
    EXPECT_FALSE(objects.front()->HasValue("pair copy state"));
    // The nameless section is walked past without harm.
    NodeSet* child = objects.front()->GetSubNodeSet(gc);
    ASSERT_NE(child, nullptr);
    int named = 0, nodes = 0;
    std::string value;
    for (NodeSet* n = child; n != nullptr; n = n->GetNextNodeSet(gc)) {
        ++nodes;
        if (n->HasValue("Pair")) {
            ++named;
            for (NodeSet* u = n->GetSubNodeSet(gc); u != nullptr; u = u->GetNextNodeSet(gc))
                if (u->HasValue("MV")) value = u->GetValue();
        }
    }
    EXPECT_EQ(named, 1);
    EXPECT_GE(nodes, 2);
    EXPECT_EQ(value, "0010");
    EXPECT_TRUE(filler.GetNodeSetsFromXPath("/CMD_REQUEST/NOTHING", gc).empty());
}

TEST(XmlLoading, FillAtrReadsDecimalFromTheNamedUnit) {
    LibXML2Filler filler;
    std::string doc = Document(Chapter("C", Object("O", Section("S", {{"Count", "42x"}, {"Empty", ""}}))));
    ASSERT_TRUE(filler.LoadChunk(doc.data(), static_cast<int>(doc.size()), 1));
    NodeSetGC gc;
    std::list<NodeSet*> units = filler.GetNodeSetsFromXPath("//UNIT", gc);
    ASSERT_EQ(units.size(), 2u);
    xmlNode* count = static_cast<LibXML2NodeSet*>(units.front())->GetNode();
    xmlNode* empty = static_cast<LibXML2NodeSet*>(units.back())->GetNode();
    unsigned long long value = 7;
    EXPECT_FALSE(LibXML2Filler::fillAtr(count, value, "Other"));
    EXPECT_EQ(value, 7u);
    EXPECT_TRUE(LibXML2Filler::fillAtr(count, value, "Count"));
    EXPECT_EQ(value, 42u);
    EXPECT_FALSE(LibXML2Filler::fillAtr(empty, value, "Empty"));
}

namespace {

std::string libxmlName(const xmlNode* node) {
    xmlChar* text = xmlGetProp(node, reinterpret_cast<const xmlChar*>("name"));
    std::string result = text != nullptr ? reinterpret_cast<const char*>(text) : "";
    xmlFree(text);
    return result;
}

std::string libxmlContent(const xmlNode* node) {
    xmlChar* text = xmlNodeGetContent(node);
    std::string result = text != nullptr ? reinterpret_cast<const char*>(text) : "";
    xmlFree(text);
    return result;
}

}  // namespace

// Names and texts are read in place where they are one text node; every
// other shape must still give what libxml2's own copies give.
TEST(XmlLoading, NamesAndTextsReadInPlaceMatchLibxml) {
    const std::string doc =
        "<?xml version=\"1.0\"?>\n"
        "<!DOCTYPE REQUEST [<!ATTLIST UNIT name CDATA \"defaulted\">]>\n"
        "<REQUEST><CMD_REQUEST><RETURN_CODE>0</RETURN_CODE><CHAPTER name=\"C\"><OBJECT name=\"O\">"
        "<SECTION name=\"S\">"
        "<UNIT name=\"plain\">text</UNIT>"
        "<UNIT name=\"a&amp;b &lt;c&gt; &#x41;\">x &amp; y &lt;z&gt;</UNIT>"
        "<UNIT name=\"\">empty name</UNIT>"
        "<UNIT name=\"cdata\"><![CDATA[a<b]]></UNIT>"
        "<UNIT name=\"mixed\">one<![CDATA[two]]>three</UNIT>"
        "<UNIT name=\"comment\">be<!-- not text -->fore</UNIT>"
        "<UNIT name=\"nested\">out<B>in</B></UNIT>"
        "<UNIT name=\"empty\"></UNIT>"
        "<UNIT>no name written</UNIT>"
        "<SECTION>no name at all</SECTION>"
        "</SECTION></OBJECT></CHAPTER></CMD_REQUEST></REQUEST>\n";
    LibXML2Filler filler;
    ASSERT_TRUE(filler.LoadChunk(doc.data(), static_cast<int>(doc.size()), 1));
    NodeSetGC gc;
    std::list<NodeSet*> nodes = filler.GetNodeSetsFromXPath("//SECTION[@name='S']/* | //SECTION[@name='S']", gc);
    ASSERT_EQ(nodes.size(), 11u);
    for (NodeSet* set : nodes) {
        xmlNode* node = static_cast<LibXML2NodeSet*>(set)->GetNode();
        const std::string name = libxmlName(node);
        SCOPED_TRACE(name);
        EXPECT_EQ(LibXML2Filler::nameOf(node), name);
        EXPECT_EQ(LibXML2Filler::contentOf(node), libxmlContent(node));
        std::string spill;
        EXPECT_EQ(std::string(LibXML2Filler::nameText(node, spill)), name);
        EXPECT_TRUE(LibXML2Filler::nameIs(node, name.c_str()));
        EXPECT_FALSE(LibXML2Filler::nameIs(node, (name + "x").c_str()));
        EXPECT_EQ(std::string(LibXML2Filler::contentText(node, spill)), libxmlContent(node));
        // A text node (not an element) has content but no name.
        if (node->children != nullptr && node->children->type == XML_TEXT_NODE) {
            EXPECT_EQ(LibXML2Filler::nameOf(node->children), "");
            EXPECT_EQ(LibXML2Filler::contentOf(node->children), libxmlContent(node->children));
        }
    }
    // The defaulted name comes from the document type, as libxml2 gives it.
    EXPECT_EQ(LibXML2Filler::nameOf(static_cast<LibXML2NodeSet*>(*std::prev(nodes.end(), 2))->GetNode()), "defaulted");
}

TEST(XmlLoading, DecimalsReadAsAStreamReadsThem) {
    struct Case {
        const char* text;
        unsigned long long value;
    };
    const Case cases[] = {
        {"0", 0},
        {"42", 42},
        {"0042", 42},
        {"9999999999999999999", 9999999999999999999ULL},
        {"18446744073709551615", 18446744073709551615ULL},
        {"18446744073709551616", 0},  // too large: the stream fails
        {"123456789012345678901234", 0},
        {" 17", 17},
        {"+5", 5},
        {"-5", 18446744073709551611ULL},  // as the stream reads an unsigned
        {"12abc", 12},
        {"abc", 0},
        {"", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(LibXML2Filler::decimalOf(c.text), c.value) << "\"" << c.text << "\"";
}
