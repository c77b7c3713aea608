#include "ConcreteJob.h"

#include <atomic>
#include <cstdio>
#include <exception>

#include <Pegasus/Common/AuditLogger.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "Exception.h"
#include "JobDetail.h"
#include "MC.h"
#include "MethodResult.h"
#include "MethodResultArgs.h"
#include "Model.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

Uint64 ConcreteJob::m_timeOut = 0;
Uint64 ConcreteJob::m_lifeTime = 0;

namespace {

std::atomic<int> s_jobCounter(0);
CIMDateTime (*s_clock)() = nullptr;

std::string nextJobId() {
    const int value = ++s_jobCounter;
    char text[32];
    std::snprintf(text, sizeof(text), "Job.%d", value);
    // Ids run from Job.1 to Job.10001 and start again; a rare clash of the
    // reset with a concurrent increment only repeats an id long gone.
    if (s_jobCounter.load() > 10000) s_jobCounter.store(0);
    return text;
}

std::string instanceIdOf(const std::string& jobId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + jobId;
}

void addProperty(CIMInstance& instance, const char* name, const CIMValue& value) {
    instance.addProperty(CIMProperty(CIMName(name), value));
}

Uint64 nonNegative(Sint64 difference) { return difference > 0 ? Uint64(difference) : 0; }

std::string describe(const Pegasus::Exception& e) { return MC::ToStd(e.getMessage()); }

// Only this program's job-related association of the given short name:
// the repository may answer with references of other classes.
bool isClass(const CIMObjectPath& path, const char* shortName) {
    return path.getClassName().equal(MC::ClassName(shortName));
}

}  // namespace

ConcreteJob::ConcreteJob(JobArgs& args)
    : m_detail(nullptr), m_methodResult(nullptr), m_state(STATE_UNKNOWN), m_percent(0) {
    // The detail is the job's from here on, even when it is refused.
    m_detail = args.detail;
    args.detail = nullptr;
    if (m_detail == nullptr) throw InvalidParamException("a job needs its detail");
    if (m_detail->GetDetail() == nullptr) {
        delete m_detail;
        throw InvalidParamException("a job needs the arguments of its detail");
    }
    m_jobId = nextJobId();
    m_context = args.invoke.context;
    m_methodName = args.invoke.methodName;
    m_target = args.invoke.objectPath;
    m_affectedElements = args.affectedElements;
    m_startTime = Now();
    m_completionTime = m_startTime;
    try {
        m_methodResult = new MethodResult(args.invoke, m_jobId);
    } catch (...) {
        delete m_detail;
        throw;
    }
}

ConcreteJob::~ConcreteJob() {
    delete m_detail;
    delete m_methodResult;
}

void ConcreteJob::SetClock(CIMDateTime (*now)()) { s_clock = now; }

CIMDateTime ConcreteJob::Now() { return s_clock != nullptr ? s_clock() : CIMDateTime::getCurrentDateTime(); }

Array<Uint16> ConcreteJob::OperationalStatusOf(int state) {
    Array<Uint16> status;
    switch (state) {
    case STATE_UNKNOWN: status.append(6); break;
    case STATE_NEW: status.append(15); break;
    case STATE_STARTING: status.append(2); status.append(8); break;
    case STATE_RUNNING:
    case STATE_WAITING: status.append(2); break;
    case STATE_COMPLETED: status.append(2); status.append(17); break;
    case STATE_EXCEPTION: status.append(6); status.append(17); break;
    default: status.append(6); break;
    }
    return status;
}

std::string ConcreteJob::StatusDescriptionOf(int state) {
    switch (state) {
    case STATE_UNKNOWN: return "Job status unknown";
    case STATE_NEW: return "New job";
    case STATE_STARTING: return "Job starting";
    case STATE_RUNNING:
    case STATE_WAITING: return "Job running";
    case STATE_COMPLETED: return "Job completed with no error";
    case STATE_EXCEPTION: return "Job occurs exception";
    default: return std::string();
    }
}

int ConcreteJob::PercentOf(int state) {
    switch (state) {
    case STATE_STARTING: return 10;
    case STATE_RUNNING: return 50;
    case STATE_WAITING: return 70;
    case STATE_COMPLETED: return 100;
    case STATE_EXCEPTION: return 0;
    default: return -1;
    }
}

CIMInstance ConcreteJob::wrapInstance() {
    const String id = MC::ToString(instanceIdOf(m_jobId));
    CIMInstance instance(MC::ClassName("ConcreteJob"));
    addProperty(instance, "InstanceID", CIMValue(id));
    addProperty(instance, "Name", CIMValue(id));
    addProperty(instance, "OperationalStatus", CIMValue(OperationalStatusOf(m_state)));
    Array<String> descriptions;
    descriptions.append(MC::ToString(StatusDescriptionOf(m_state)));
    addProperty(instance, "StatusDescriptions", CIMValue(descriptions));
    // State -1 has no JobState value: it is never published.
    addProperty(instance, "JobState", CIMValue(Uint16(m_state < 0 ? 0 : m_state)));
    addProperty(instance, "JobStatus", CIMValue(String()));
    addProperty(instance, "PercentComplete", CIMValue(Uint16(m_percent)));
    addProperty(instance, "DeleteOnCompletion", CIMValue(Boolean(true)));
    std::string description;
    try {
        description = m_detail->GetDescription();
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", m_jobId.c_str(), "no description", e.what());
    }
    addProperty(instance, "Description", CIMValue(MC::ToString(description)));
    addProperty(instance, "TimeBeforeRemoval", CIMValue(CIMDateTime(m_lifeTime, true)));
    // A job that has not started has no start time yet.
    const bool started = m_state == STATE_RUNNING || m_state == STATE_WAITING || m_state == STATE_COMPLETED ||
                         m_state == STATE_EXCEPTION;
    addProperty(instance, "StartTime", started ? CIMValue(m_startTime) : CIMValue(CIMTYPE_DATETIME, false));
    addProperty(instance, "ElapsedTime", CIMValue(CIMDateTime(GetElapsedTimeFromStart(), true)));
    Uint16 errorCode = 0;
    std::string errorDescription;
    if (m_state == STATE_EXCEPTION) {
        const std::vector<ResultInfo>& errors = m_detail->GetDetail()->errors;
        if (!errors.empty()) {
            errorCode = Uint16(errors.front().MapOrvCodeToCimomCode());
            errorDescription = errors.front().message;
        } else {
            // Nothing failed on the array: the effect never showed in time.
            errorCode = 2;
        }
        if (errorDescription.empty()) errorDescription = "Unknown error!";
    }
    addProperty(instance, "ErrorCode", CIMValue(errorCode));
    addProperty(instance, "ErrorDescription", CIMValue(MC::ToString(errorDescription)));

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), id, CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("ConcreteJob"), keys, path);
    instance.setPath(path);
    return instance;
}

CIMObjectPath ConcreteJob::Create() {
    m_state = STATE_STARTING;
    m_percent = PercentOf(STATE_STARTING);
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = wrapInstance();
    m_path = instance.getPath();
    handle->CreateInstance(m_context, MC::Namespace(), instance);
    OwningJobElement::Create(m_context, m_target, m_path);
    MethodResultArgs resultArgs(m_path);
    m_methodResult->Create(resultArgs);
    for (const CIMObjectPath& element : m_affectedElements) AffectedJobElement::Create(m_context, element, m_path);
    ActivateInstCreationIndication(instance);
    std::printf("Create %s\n", m_jobId.c_str());
    return m_path;
}

void ConcreteJob::Delete() {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    // Each removal stands alone: a job whose instance cannot be removed must
    // not keep its associations or its result behind.
    try {
        m_methodResult->Delete();
    } catch (const Pegasus::Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s ,%s", m_jobId.c_str(), describe(e).c_str());
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s ,%s", m_jobId.c_str(), e.what());
    }
    const char* const associations[] = {"OwningJobElement", "AffectedJobElement"};
    for (const char* shortName : associations) {
        try {
            Array<CIMObjectPath> references;
            handle->ReferenceNames(m_context, MC::Namespace(), m_path, MC::ClassName(shortName), String(),
                                   references);
            for (Uint32 i = 0; i < references.size(); ++i) {
                if (!isClass(references[i], shortName)) continue;
                handle->DeleteInstance(m_context, MC::Namespace(), references[i]);
            }
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s %s ,%s", m_jobId.c_str(), shortName, describe(e).c_str());
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s %s ,%s", m_jobId.c_str(), shortName, e.what());
        }
    }
    try {
        handle->DeleteInstance(m_context, MC::Namespace(), m_path);
    } catch (const Pegasus::Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s ,%s", m_jobId.c_str(), describe(e).c_str());
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Delete ] : %s ,%s", m_jobId.c_str(), e.what());
    }
}

void ConcreteJob::Update(int state) {
    m_state = state;
    const int percent = PercentOf(state);
    if (percent < 0) return;
    m_percent = percent;
    if (state == STATE_COMPLETED || state == STATE_EXCEPTION) m_completionTime = Now();
    if (state == STATE_RUNNING) m_startTime = Now();
    modify();
}

void ConcreteJob::modify() {
    // The job's own state is what counts; a repository that cannot take the
    // new instance now gets it with the next change of state.
    try {
        CimHandle* handle = Singleton<CimHandle>::Instance();
        CIMInstance oldInstance =
            handle->GetSmisInstance(m_context, MC::Namespace(), m_path, false, false, false, CIMPropertyList());
        CIMInstance newInstance = wrapInstance();
        newInstance.setPath(m_path);
        handle->ModifyInstance(m_context, MC::Namespace(), newInstance, false, CIMPropertyList());
        ActivateInstModificationIndication(newInstance, oldInstance);
        ActivateInstDeviceAlertIndication(m_path, newInstance, oldInstance);
    } catch (const Pegasus::Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Update ] : %s state %d ,%s", m_jobId.c_str(), m_state, describe(e).c_str());
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Update ] : %s state %d ,%s", m_jobId.c_str(), m_state, e.what());
    }
}

bool ConcreteJob::Start() {
    std::printf("Executing : %s\n", m_jobId.c_str());
    Pegasus::outputFedRampLog(m_context, MC::ToStd(m_methodName));
    Update(STATE_RUNNING);
    bool executed = false;
    try {
        executed = m_detail->Execute();
    } catch (const std::exception& e) {
        // A job type that throws has failed like a refused command.
        m_detail->GetDetail()->errors.push_back(ResultInfo(false, "", e.what()));
    } catch (const Pegasus::Exception& e) {
        m_detail->GetDetail()->errors.push_back(ResultInfo(false, "", describe(e)));
    }
    if (executed) {
        Update(STATE_WAITING);
        std::printf("Executed successfully : %s\n", m_jobId.c_str());
        SMIS_TRACE(LEVEL2, "Info[Start] : %s executed. Waiting result now.", m_jobId.c_str());
        return true;
    }
    bool alerted = false;
    try {
        alerted = ActivateInstCLIAlertIndication(m_methodName, m_target);
    } catch (...) {
        alerted = false;
    }
    if (!alerted) {
        SMIS_TRACE(LEVEL2, "Error[Indicaion] : send cli indication failed. methodName = %s, element = %s",
                   MC::ToStd(m_methodName).c_str(), MC::ToStd(m_target.toString()).c_str());
    }
    try {
        m_detail->Recover();
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Recover ] : %s ,%s", m_jobId.c_str(), e.what());
    } catch (const Pegasus::Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ Recover ] : %s ,%s", m_jobId.c_str(), describe(e).c_str());
    }
    Update(STATE_EXCEPTION);
    m_methodResult->SetReturnValue("Failed");
    std::printf("Executed failed : %s\n", m_jobId.c_str());
    return false;
}

void ConcreteJob::moveAffectedElements(const Array<CIMParamValue>& out) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(m_context, MC::Namespace(), m_path, MC::ClassName("AffectedJobElement"),
                           String("AffectingElement"), references);
    for (Uint32 i = 0; i < references.size(); ++i) {
        if (!isClass(references[i], "AffectedJobElement")) continue;
        handle->DeleteInstance(m_context, MC::Namespace(), references[i]);
    }
    m_affectedElements.clear();
    for (Uint32 i = 0; i < out.size(); ++i) {
        const CIMValue value = out[i].getValue();
        if (value.getType() != CIMTYPE_REFERENCE || value.isArray() || value.isNull()) continue;
        CIMObjectPath element;
        value.get(element);
        AffectedJobElement::Create(m_context, element, m_path);
        m_affectedElements.push_back(element);
    }
}

bool ConcreteJob::End() {
    if (m_state != STATE_WAITING) return false;
    Array<CIMParamValue> out;
    bool finished = false;
    try {
        finished = m_detail->Finish(out);
    } catch (const std::exception& e) {
        // Looked at again with the next view; the time-out still applies.
        SMIS_TRACE(LEVEL1, "Error[ End ] : %s ,%s", m_jobId.c_str(), e.what());
    } catch (const Pegasus::Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ End ] : %s ,%s", m_jobId.c_str(), describe(e).c_str());
    }
    if (finished) {
        if (m_detail->GetDetail()->operation == DetailArgs::OPERATION_CREATE) {
            m_methodResult->SetOutParameters(out);
            try {
                moveAffectedElements(out);
            } catch (const Pegasus::Exception& e) {
                SMIS_TRACE(LEVEL1, "Error[ End ] : %s AffectedJobElement ,%s", m_jobId.c_str(),
                           describe(e).c_str());
            } catch (const std::exception& e) {
                SMIS_TRACE(LEVEL1, "Error[ End ] : %s AffectedJobElement ,%s", m_jobId.c_str(), e.what());
            }
        }
        Update(STATE_COMPLETED);
        m_methodResult->SetReturnValue("Complete with no error");
        try {
            m_methodResult->Modify();
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ End ] : %s MethodResult ,%s", m_jobId.c_str(), describe(e).c_str());
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ End ] : %s MethodResult ,%s", m_jobId.c_str(), e.what());
        }
    } else if (GetElapsedTimeFromStart() >= m_timeOut) {
        // No Recover: the commands were accepted and the array may yet
        // carry them out.
        Update(STATE_EXCEPTION);
        m_methodResult->SetReturnValue("Failed");
        try {
            m_methodResult->Modify();
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ End ] : %s MethodResult ,%s", m_jobId.c_str(), describe(e).c_str());
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ End ] : %s MethodResult ,%s", m_jobId.c_str(), e.what());
        }
        std::printf("Timeout failed : %s\n", m_jobId.c_str());
    }
    std::printf("End %s\n", m_jobId.c_str());
    return finished;
}

void ConcreteJob::GetErrors(Array<CIMObject>& out) {
    if (m_state != STATE_EXCEPTION) return;
    const std::string vendor = Singleton<ConfigManager>::Instance()->GetVendor();
    for (const ResultInfo& info : m_detail->GetDetail()->errors) {
        CIMInstance error(CIMName("CIM_Error"));
        addProperty(error, "CIMStatusCode", CIMValue(Sint32(1)));
        addProperty(error, "Message", CIMValue(MC::ToString(info.message)));
        addProperty(error, "MessageID", CIMValue(MC::ToString(info.code)));
        addProperty(error, "OwningEntity", CIMValue(MC::ToString(vendor)));
        addProperty(error, "PerceivedSeverity", CIMValue(Uint16(3)));
        addProperty(error, "ProbableCause", CIMValue(Uint16(0)));
        out.append(CIMObject(error));
    }
}

Uint64 ConcreteJob::GetElapsedTimeFromStart() {
    switch (m_state) {
    case STATE_RUNNING:
    case STATE_WAITING: return nonNegative(CIMDateTime::getDifference(m_startTime, Now()));
    case STATE_COMPLETED:
    case STATE_EXCEPTION: return nonNegative(CIMDateTime::getDifference(m_startTime, m_completionTime));
    default: return 0;
    }
}

Uint64 ConcreteJob::GetElapsedTimeFromCompletion() {
    return nonNegative(CIMDateTime::getDifference(m_completionTime, Now()));
}

}  // namespace orvsmis
