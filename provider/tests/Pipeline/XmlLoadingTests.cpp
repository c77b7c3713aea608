#include <gtest/gtest.h>

#include <algorithm>
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
