// The job classes checked by the real CIM server: the server must start on
// the schema with the instances of a finished job as the engine writes them,
// and it refuses a class or property the schema lacks.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ExecVexcfg.h"
#include "JobTestSupport.h"
#include "../Model/SchemaServerCheck.h"

using namespace Pegasus;
using namespace orvsmis;
using namespace jobtest;

namespace {

// The MOF of an instance; datetimes as their text, embedded instances left
// null (MOF has no literal for them: their declaration is what is checked).
std::string jobMof(const CIMInstance& instance) {
    std::ostringstream out;
    out << "instance of " << instance.getClassName().getString().toUtf8() << "\n{\n";
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        const CIMValue value = p.getValue();
        out << "    " << p.getName().getString().toUtf8() << " = ";
        if (value.isNull() || value.getType() == CIMTYPE_INSTANCE || value.getType() == CIMTYPE_OBJECT) {
            out << "NULL";
        } else if (value.getType() == CIMTYPE_DATETIME) {
            CIMDateTime time;
            value.get(time);
            out << schemacheck::quoted(time.toString().toUtf8());
        } else {
            out << schemacheck::mofValue(value);
        }
        out << ";\n";
    }
    out << "};\n\n";
    return out.str();
}

class JobSchema : public JobFixture {};

TEST_F(JobSchema, TheServerTakesWhatTheJobEngineWrites) {
    auto script = std::make_shared<Script>();
    script->effectShown = true;
    script->output.append(CIMParamValue(String("TheElement"), CIMValue(volume)));
    CIMObjectPath job = queue(script);
    RunCfgThreadTurn();
    jobs()->EndJobs();
    ASSERT_EQ(modeltest::prop<Uint16>(stored(job), "JobState"), 7);

    schemacheck::ServerRoot root;
    // The job classes join the namespace's schema once; until then the test
    // brings them in itself.
    const std::string main = root.schema + "/20-root-orv.mof";
    std::ifstream in(main);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    in.close();
    if (text.find("orv/Jobs.mof") == std::string::npos)
        std::ofstream(main, std::ios::app) << "\n#pragma include (\"orv/Jobs.mof\")\n";

    std::string mof = "#pragma namespace (\"root/orv\")\n\n";
    for (const char* cls : {"ConcreteJob", "MethodResult"}) {
        std::vector<CIMInstance> found = repository->of(MC::ClassNameText(cls));
        ASSERT_EQ(found.size(), 1u) << cls;
        mof += jobMof(found[0]);
    }
    std::ofstream(root.schema + "/90-job-instances.mof") << mof;
    std::string output;
    EXPECT_TRUE(root.start(output)) << output << "\n" << mof;
}

}  // namespace
