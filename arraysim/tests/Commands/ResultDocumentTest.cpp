// The answer of a configuration command, read back as the module reads it:
// libxml2 and the XPath "/REQUEST/CMD_REQUEST".

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include "CommandError.h"
#include "ResultDocument.h"

using arraysim::CommandError;
using arraysim::ResultDocument;

namespace {

// The text of every node an XPath selects, in document order.
std::vector<std::string> select(const std::string& xml, const std::string& path) {
    std::vector<std::string> texts;
    std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> doc(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "r.xml", nullptr, XML_PARSE_NONET),
                                                     xmlFreeDoc);
    if (!doc) {
        ADD_FAILURE() << "not well-formed: " << xml;
        return texts;
    }
    std::unique_ptr<xmlXPathContext, void (*)(xmlXPathContextPtr)> context(xmlXPathNewContext(doc.get()), xmlXPathFreeContext);
    std::unique_ptr<xmlXPathObject, void (*)(xmlXPathObjectPtr)> result(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), context.get()), xmlXPathFreeObject);
    if (!result || result->nodesetval == nullptr) return texts;
    for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        xmlChar* text = xmlNodeGetContent(result->nodesetval->nodeTab[i]);
        texts.emplace_back(text == nullptr ? "" : reinterpret_cast<const char*>(text));
        xmlFree(text);
    }
    return texts;
}

std::string unit(const std::string& xml, const std::string& name) {
    const auto texts = select(xml, "/REQUEST/CMD_REQUEST/RETURN_MSG/UNIT[@name='" + name + "']");
    return texts.size() == 1 ? texts.front() : "<" + std::to_string(texts.size()) + " units>";
}

TEST(ResultDocumentTest, FailureCarriesCodeIdMessageAndTime) {
    const CommandError error(CommandError::Kind::InUse, "logical disk 0010h belongs to <LD set> & more");
    const ResultDocument doc = ResultDocument::Failure(error, 1772323200);
    const std::string xml = doc.Xml();
    EXPECT_EQ(select(xml, "/REQUEST/CMD_REQUEST/RETURN_CODE"), std::vector<std::string>{"1"});
    EXPECT_EQ(unit(xml, "message_id"), "Vex10401");
    // The message reads as a sentence, its markup characters escaped and intact.
    EXPECT_EQ(unit(xml, "message_content"), "Logical disk 0010h belongs to <LD set> & more");
    EXPECT_EQ(unit(xml, "return_time").size(), std::string("2026/03/01 00:00:00").size());
    // The RETURN_MSG carries a name, as every element below CMD_REQUEST but RETURN_CODE does.
    EXPECT_EQ(select(xml, "/REQUEST/CMD_REQUEST/RETURN_MSG/@name").size(), 1u);
}

TEST(ResultDocumentTest, EveryKindHasItsOwnVexIdAndSyntaxIsTwo) {
    std::set<std::string> ids;
    for (auto kind : {CommandError::Kind::Syntax, CommandError::Kind::NotFound, CommandError::Kind::Exists,
                      CommandError::Kind::InUse, CommandError::Kind::State, CommandError::Kind::Capacity,
                      CommandError::Kind::Rule, CommandError::Kind::Limit, CommandError::Kind::Internal}) {
        const CommandError error(kind, "x");
        EXPECT_EQ(error.MessageId().size(), 8u);
        EXPECT_EQ(error.MessageId().rfind("Vex", 0), 0u);
        EXPECT_EQ(error.MessageId().find_first_not_of("0123456789", 3), std::string::npos);
        ids.insert(error.MessageId());
        EXPECT_EQ(error.ReturnCode(), kind == CommandError::Kind::Syntax ? 2 : 1);
    }
    EXPECT_EQ(ids.size(), 9u);
}

TEST(ResultDocumentTest, WriteAnswersInTheChosenFormAndReturnsTheCode) {
    const ResultDocument ok = ResultDocument::Success("pool 0002h was bound", 1772323200);
    const ResultDocument bad = ResultDocument::Failure(CommandError(CommandError::Kind::Syntax, "Vexcfg: bad"), 1772323200);
    {
        std::ostringstream out, err;
        EXPECT_EQ(ok.Write(true, out, err), 0);
        EXPECT_EQ(select(out.str(), "/REQUEST/CMD_REQUEST/RETURN_CODE"), std::vector<std::string>{"0"});
        EXPECT_EQ(unit(out.str(), "message_content"), "Pool 0002h was bound");
        EXPECT_TRUE(err.str().empty());
    }
    {
        std::ostringstream out, err;
        EXPECT_EQ(bad.Write(true, out, err), 2);
        EXPECT_EQ(select(out.str(), "/REQUEST/CMD_REQUEST/RETURN_CODE"), std::vector<std::string>{"2"});
    }
    {
        std::ostringstream out, err;
        EXPECT_EQ(ok.Write(false, out, err), 0);
        EXPECT_EQ(out.str().rfind("Vex00000 Pool 0002h was bound\n", 0), 0u) << out.str();
    }
    {
        std::ostringstream out, err;
        EXPECT_EQ(bad.Write(false, out, err), 2);
        EXPECT_TRUE(out.str().empty());
        EXPECT_EQ(err.str().rfind("Vex10101 Vexcfg: bad\n", 0), 0u) << err.str();
    }
}

TEST(ResultDocumentTest, TextLibxmlCannotCarryStillGivesAFailureDocument) {
    // Bytes that are no UTF-8: the answer must still be a document, and a failing one.
    const ResultDocument odd(0, "Vex00000", std::string("name \xff\xfe"), 1772323200);
    std::ostringstream out, err;
    const int status = odd.Write(true, out, err);
    EXPECT_NE(status, 0);
    EXPECT_EQ(select(out.str(), "/REQUEST/CMD_REQUEST/RETURN_CODE"), std::vector<std::string>{std::to_string(status)});
}

}  // namespace
