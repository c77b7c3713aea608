#ifndef PROVIDER_TESTS_JOBS_JOBTESTSUPPORT_H
#define PROVIDER_TESTS_JOBS_JOBTESTSUPPORT_H

// A job type whose outcome each test scripts, a clock the tests move by hand,
// and a fixture that wires the fake repository and indication handler in and
// leaves the job queue empty around each test.

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <Pegasus/Common/AuditLogger.h>
#include <Pegasus/Common/CIMDateTime.h>

#include "ConcreteJob.h"
#include "ConcreteJobController.h"
#include "JobDetail.h"
#include "JobManager.h"
#include "MC.h"
#include "MethodResult.h"
#include "../Model/ModelTestSupport.h"

namespace jobtest {

using namespace Pegasus;

const Uint64 MINUTE = 60000000ULL;

// What one scripted job does and what happened to it. Shared with the test,
// which keeps it after the job (and its detail) are gone.
struct Script {
    bool executeAccepted = true;
    orvsmis::ResultInfo failure{false, "CFG0042", "LD name already used"};
    bool effectShown = false;
    Array<CIMParamValue> output;
    int executed = 0;
    int finished = 0;
    int recovered = 0;
    std::function<void()> duringExecute;
};

class ScriptedDetail : public orvsmis::JobDetail {
public:
    ScriptedDetail(std::shared_ptr<Script> script, int operation)
        : m_script(script), m_args(operation, orvsmis::DetailArgs::ELEMENT_LD) {}

    bool Execute() override {
        ++m_script->executed;
        if (m_script->duringExecute) m_script->duringExecute();
        if (!m_script->executeAccepted) m_args.errors.push_back(m_script->failure);
        return m_script->executeAccepted;
    }
    bool Finish(Array<CIMParamValue>& out) override {
        ++m_script->finished;
        if (!m_script->effectShown) return false;
        out = m_script->output;
        return true;
    }
    void Recover() override { ++m_script->recovered; }
    orvsmis::DetailArgs* GetDetail() override { return &m_args; }
    std::string GetDescription() override { return "Create volume vol01"; }

private:
    std::shared_ptr<Script> m_script;
    orvsmis::DetailArgs m_args;
};

// The time the jobs see; moved only by the tests.
inline CIMDateTime& clockNow() {
    static CIMDateTime now;
    return now;
}
inline CIMDateTime fakeNow() { return clockNow(); }
inline void advance(Uint64 microseconds) { clockNow() = clockNow() + CIMDateTime(microseconds, true); }

class JobFixture : public modeltest::ModelFixture {
protected:
    void SetUp() override {
        ModelFixture::SetUp();
        jobs()->Clean();
        clockNow() = CIMDateTime::getCurrentDateTime();
        orvsmis::ConcreteJob::SetClock(&fakeNow);
        orvsmis::ConcreteJob::m_timeOut = 60 * MINUTE;
        orvsmis::ConcreteJob::m_lifeTime = 60 * MINUTE;

        char pattern[] = "/tmp/jobs-audit-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        folder = pattern;
        AuditLogger::setLogFile(folder + "/audit.log");

        service = keyed("StorageConfigurationService", "Name", "ORV.ORV : service");
        pool = keyed("StoragePool", "InstanceID", "ORV.ORV : pool 0001h");
        volume = keyed("StorageVolume", "DeviceID", "0010h");
    }
    void TearDown() override {
        jobs()->Clean();
        orvsmis::ConcreteJob::SetClock(nullptr);
        AuditLogger::setLogFile(std::string());
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
        ModelFixture::TearDown();
    }

    static orvsmis::JobManager* jobs() { return orvsmis::Singleton<orvsmis::JobManager>::Instance(); }

    // An element stored in the repository, so that a method call on it can
    // show its instance.
    CIMObjectPath keyed(const char* shortName, const char* key, const char* value) {
        CIMInstance instance(orvsmis::MC::ClassName(shortName));
        instance.addProperty(CIMProperty(CIMName(key), CIMValue(String(value))));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName(key), String(value), CIMKeyBinding::STRING));
        CIMObjectPath path(String(), orvsmis::MC::Namespace(), orvsmis::MC::ClassName(shortName), keys);
        instance.setPath(path);
        repository->createInstance(context, orvsmis::MC::Namespace(), instance);
        return path;
    }

    // Queues a job on the service that works on the pool.
    CIMObjectPath queue(std::shared_ptr<Script> script,
                        int operation = orvsmis::DetailArgs::OPERATION_CREATE) {
        Array<CIMParamValue> in;
        in.append(CIMParamValue(String("ElementName"), CIMValue(String("vol01"))));
        in.append(CIMParamValue(String("InPool"), CIMValue(pool)));
        in.append(CIMParamValue(String("Size"), CIMValue(Uint64(1073741824ULL))));
        orvsmis::JobArgs args(new ScriptedDetail(script, operation),
                              orvsmis::InvokeArgs(context, service, String("CreateOrModifyElementFromStoragePool"),
                                                  in));
        args.affectedElements.push_back(pool);
        return jobs()->CreateJob(args);
    }

    CIMInstance stored(const CIMObjectPath& path) { return repository->get(path); }

    // The far ends of the stored associations of a class that hold path.
    std::vector<std::string> linked(const CIMObjectPath& path, const char* shortName) {
        std::vector<std::string> out;
        const std::string self = modeltest::canonical(path);
        for (const CIMInstance& link : repository->of(orvsmis::MC::ClassNameText(shortName))) {
            bool mine = false;
            std::vector<std::string> others;
            for (Uint32 i = 0; i < link.getPropertyCount(); ++i) {
                const CIMValue value = link.getProperty(i).getValue();
                if (value.getType() != CIMTYPE_REFERENCE || value.isNull()) continue;
                CIMObjectPath ref;
                value.get(ref);
                if (modeltest::canonical(ref) == self) mine = true;
                else others.push_back(modeltest::canonical(ref));
            }
            if (mine) out.insert(out.end(), others.begin(), others.end());
        }
        return out;
    }

    std::vector<std::string> auditLines() {
        std::vector<std::string> lines;
        std::ifstream in(folder + "/audit.log");
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }

    std::string folder;
    CIMObjectPath service;
    CIMObjectPath pool;
    CIMObjectPath volume;
};

// A method result handler that keeps nothing: the controllers' results are
// read from their return value and output array.
class NoResult : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue&) override {}
    void deliver(const CIMValue&) override {}
};

// Calls a ConcreteJob method through its controller.
struct JobCall {
    Uint32 result = 9999;
    Array<CIMParamValue> out;

    JobCall(const OperationContext& context, const CIMObjectPath& job, const char* method) {
        NoResult handler;
        const CIMName name(method);
        const Array<CIMParamValue> in;
        orvsmis::InvokeMethodArgs args(context, job, name, in, out, handler);
        orvsmis::ConcreteJobController controller;
        controller.Invoke(args, out).get(result);
    }
    const CIMParamValue* find(const char* name) const {
        for (Uint32 i = 0; i < out.size(); ++i)
            if (out[i].getParameterName() == name) return &out[i];
        return nullptr;
    }
};

}  // namespace jobtest

#endif
