#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include "SubjectFile.h"
#include "TextTableWriter.h"
#include "ViewDocument.h"
#include "ViewError.h"
#include "XmlDocWriter.h"
#include "XmlProbe.h"

using namespace arraysim;

namespace {

ViewDocument SampleDocument() {
    ViewDocument doc;
    ViewChapter& chapter = doc.AddChapter("Pool");
    ViewObject& pool = chapter.AddObject("Pool");
    pool.AddSection("Pool Detail Information").Add("Pool No.(h)", "0001").Add("Pool Name", "a<b>&\"c'");
    pool.AddSection("RANK List").Add("Strip Size", "1");
    pool.AddSection("RANK List").Add("Strip Size", "2");
    chapter.AddObject("Pool").AddSection("Pool Detail Information").Add("Pool No.(h)", "0002").Add("Pool Name", "");
    return doc;
}

}  // namespace

TEST(XmlDocWriter, WritesTheRequestSkeletonWithEscapedValues) {
    XmlProbe probe(XmlDocWriter::ToString(SampleDocument()));
    ASSERT_TRUE(probe.Ok());
    EXPECT_EQ("REQUEST", probe.RootName());
    EXPECT_EQ("0", probe.First("/REQUEST/CMD_REQUEST/RETURN_CODE"));
    const std::string pools = "/REQUEST/CMD_REQUEST/CHAPTER[@name='Pool']/OBJECT[@name='Pool']";
    EXPECT_EQ(2u, probe.Count(pools));
    EXPECT_EQ("a<b>&\"c'",
              probe.First(pools + "/SECTION[@name='Pool Detail Information']/UNIT[@name='Pool Name']"));
    // Repeated sections stay separate, in order; an empty value is an empty unit.
    EXPECT_EQ((std::vector<std::string>{"1", "2"}),
              probe.All(pools + "[1]/SECTION[@name='RANK List']/UNIT[@name='Strip Size']"));
    EXPECT_EQ("", probe.First(pools + "[2]/SECTION/UNIT[@name='Pool Name']"));
    EXPECT_EQ(0u, probe.Count("//RETURN_MSG"));
}

TEST(XmlDocWriter, BareRootAndFailureMessage) {
    ViewDocument doc = SampleDocument();
    doc.SetRoot(ViewDocument::Root::CmdRequest);
    doc.SetFailure(3, "Vex20003", "cannot open the file /x");
    XmlProbe probe(XmlDocWriter::ToString(doc));
    ASSERT_TRUE(probe.Ok());
    EXPECT_EQ("CMD_REQUEST", probe.RootName());
    EXPECT_EQ("3", probe.First("/CMD_REQUEST/RETURN_CODE"));
    EXPECT_EQ("Vex20003", probe.First("/CMD_REQUEST/RETURN_MSG/*[@name='message_id']"));
    EXPECT_EQ("cannot open the file /x", probe.First("/CMD_REQUEST/RETURN_MSG/*[@name='message_content']"));
    EXPECT_EQ(1u, probe.Count("/CMD_REQUEST/RETURN_MSG/*[@name='return_time']"));
    EXPECT_EQ(0u, probe.Count("//CHAPTER"));
}

TEST(XmlDocWriter, RefusesTextThatIsNotUtf8) {
    ViewDocument doc;
    doc.AddChapter("Logical Disk").AddObject("Logical Disk").AddSection("LD Detail Information").Add("LD Name", "bad\xff\xfe");
    EXPECT_THROW(XmlDocWriter::ToString(doc), std::runtime_error);
    ViewDocument control;
    control.AddChapter("Logical Disk").AddObject("Logical Disk").AddSection("LD Detail Information").Add("LD Name", "a\x01b");
    EXPECT_THROW(XmlDocWriter::ToString(control), std::runtime_error);
    // Written as a stream, a refused value leaves nothing half written.
    for (const ViewDocument* refused : {&doc, &control}) {
        std::ostringstream out;
        EXPECT_THROW(XmlDocWriter::Write(*refused, out), std::runtime_error);
        EXPECT_EQ("", out.str());
    }
}

TEST(XmlDocWriter, StreamedTextEqualsTheWholeText) {
    // Large enough that libxml2 flushes its buffer many times on the way.
    ViewDocument doc = SampleDocument();
    ViewChapter& disks = doc.AddChapter("Physical Disk");
    for (int i = 0; i < 3000; ++i)
        disks.AddObject("Physical Disk").AddSection("PD Detail Information").Add("PD No.(h)", std::to_string(i))
            .Add("State", i % 7 == 0 ? "fault" : "ready");
    std::ostringstream out;
    XmlDocWriter::Write(doc, out);
    EXPECT_GT(out.str().size(), 100000u);
    EXPECT_EQ(XmlDocWriter::ToString(doc), out.str());
}

TEST(TextTableWriter, AlignsUnitsAndShowsFailures) {
    std::string text = TextTableWriter::ToString(SampleDocument());
    EXPECT_NE(std::string::npos, text.find("--- Pool ---"));
    EXPECT_NE(std::string::npos, text.find("    Pool No.(h) : 0001\n"));
    EXPECT_NE(std::string::npos, text.find("    Pool Name   : a<b>&\"c'\n"));

    ViewDocument failed = SampleDocument();
    failed.SetFailure(1, "Vex20001", "unknown option -x");
    EXPECT_EQ("Vex20001 unknown option -x\n", TextTableWriter::ToString(failed));
}

TEST(SubjectFile, ReadsLdLines) {
    EXPECT_EQ((std::vector<std::string>{"MV 1", "db:vol"}), SubjectFile::Parse("ld:MV 1\r\n\nld:db:vol\n", "f"));
    EXPECT_EQ((std::vector<std::string>{"last"}), SubjectFile::Parse("ld:last", "f"));
}

TEST(SubjectFile, RefusesWhatIsNotASubject) {
    for (const char* text : {"", "\n  \n", "ld:\n", "lv:a\n", "ld:a\nLD:b\n", " ld:a\n"}) {
        try {
            SubjectFile::Parse(text, "f");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const ViewError& e) {
            EXPECT_EQ(ViewError::kFileError, e.ReturnCode()) << text;
        }
    }
    try {
        SubjectFile::Read(std::string(TEST_BINARY_DIR) + "/no-such-subject-file");
        ADD_FAILURE();
    } catch (const ViewError& e) {
        EXPECT_EQ(ViewError::kFileError, e.ReturnCode());
        EXPECT_EQ("Vex20003", e.MessageId());
    }
}

TEST(SubjectFile, FixedPathsStandUnderTheRoot) {
    EXPECT_EQ(SubjectFile::Locate("/opt/pegasus/etc/conf/Vexrc_query.txt", "/tmp/r"),
              "/tmp/r/opt/pegasus/etc/conf/Vexrc_query.txt");
    EXPECT_EQ(SubjectFile::Locate("/opt/a.txt", "/tmp/r/"), "/tmp/r/opt/a.txt");
    EXPECT_EQ(SubjectFile::Locate("/opt/a.txt", nullptr), "/opt/a.txt");
    EXPECT_EQ(SubjectFile::Locate("/opt/a.txt", ""), "/opt/a.txt");
    EXPECT_EQ(SubjectFile::Locate("/tmp/r/opt/a.txt", "/tmp/r"), "/tmp/r/opt/a.txt");
    // A neighbour whose name merely begins like the root is not inside it.
    EXPECT_EQ(SubjectFile::Locate("/tmp/rx/a.txt", "/tmp/r"), "/tmp/r/tmp/rx/a.txt");
    EXPECT_EQ(SubjectFile::Locate("conf/a.txt", "/tmp/r"), "conf/a.txt");
}
