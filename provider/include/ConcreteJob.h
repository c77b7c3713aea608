#ifndef ORVSMIS_CONCRETEJOB_H
#define ORVSMIS_CONCRETEJOB_H

#include <string>
#include <vector>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>

#include "IndicationNeeder.h"
#include "JobArgs.h"

namespace orvsmis {

class JobDetail;
class MethodResult;

// One asynchronous job: its <prefix>ConcreteJob instance, its method result
// and its life from queued (3) through running (4) and waiting for proof
// (32768) to completed (7) or failed (10).
class ConcreteJob : public IndicationNeeder {
public:
    enum {
        STATE_UNKNOWN = -1,
        STATE_NEW = 2,
        STATE_STARTING = 3,
        STATE_RUNNING = 4,
        STATE_COMPLETED = 7,
        STATE_EXCEPTION = 10,
        STATE_WAITING = 32768
    };

    // Takes ownership of args.detail.
    explicit ConcreteJob(JobArgs& args);
    virtual ~ConcreteJob();

    // Writes the job, its owning element, its method result and its affected
    // elements to the repository; state 3. Returns the job's path.
    Pegasus::CIMObjectPath Create();
    // Removes the method result, the associations and the job instance.
    void Delete();
    // Runs the commands (configuration thread). True when they were all
    // accepted (state 32768); false when the job failed at once (state 10).
    bool Start();
    // For a job in state 32768 (view thread): true when the effect showed
    // (state 7); false while it has not, and the job fails (10) once
    // JobTimeout has passed since its start.
    bool End();
    // The job's errors as CIM_Error objects; only in state 10.
    void GetErrors(Pegasus::Array<Pegasus::CIMObject>& out);
    // Sets the state (with percent and time stamps) and rewrites the
    // instance. States without a meaning here are ignored.
    void Update(int state);

    // Microseconds the job ran (to now, or to its completion once ended).
    Pegasus::Uint64 GetElapsedTimeFromStart();
    // Microseconds since completion.
    Pegasus::Uint64 GetElapsedTimeFromCompletion();

    const std::string& GetJobId() const { return m_jobId; }
    const Pegasus::CIMObjectPath& GetPath() const { return m_path; }
    int GetState() const { return m_state; }
    int GetPercentComplete() const { return m_percent; }
    JobDetail* GetJobDetail() const { return m_detail; }
    MethodResult* GetMethodResult() const { return m_methodResult; }

    // The published form of a state: OperationalStatus values and
    // StatusDescriptions[0].
    static Pegasus::Array<Pegasus::Uint16> OperationalStatusOf(int state);
    static std::string StatusDescriptionOf(int state);
    // PercentComplete of a state, -1 for a state that leaves it unchanged.
    static int PercentOf(int state);

    // The clock of the time stamps; null restores the system clock. For
    // tests that must move time without waiting.
    static void SetClock(Pegasus::CIMDateTime (*now)());
    static Pegasus::CIMDateTime Now();

    // JobTimeout and JobLifeTime in microseconds; zero until the
    // configuration was read (ReadJobTimeSettings).
    static Pegasus::Uint64 m_timeOut;
    static Pegasus::Uint64 m_lifeTime;

private:
    ConcreteJob(const ConcreteJob&) = delete;
    ConcreteJob& operator=(const ConcreteJob&) = delete;

    Pegasus::CIMInstance wrapInstance();
    void modify();
    void moveAffectedElements(const Pegasus::Array<Pegasus::CIMParamValue>& out);

    std::string m_jobId;
    JobDetail* m_detail;
    MethodResult* m_methodResult;
    std::vector<Pegasus::CIMObjectPath> m_affectedElements;
    Pegasus::CIMObjectPath m_path;
    int m_state;
    int m_percent;
    Pegasus::CIMDateTime m_startTime;
    Pegasus::CIMDateTime m_completionTime;
    Pegasus::OperationContext m_context;
    // Kept for the CLI alert and the audit line.
    Pegasus::String m_methodName;
    Pegasus::CIMObjectPath m_target;
};

}  // namespace orvsmis

#endif
