#ifndef ORVSMIS_JOBARGS_H
#define ORVSMIS_JOBARGS_H

#include <vector>

#include <Pegasus/Common/CIMObjectPath.h>

#include "InvokeArgs.h"

namespace orvsmis {

class JobDetail;

// Everything JobManager::CreateJob needs to make a job.
class JobArgs {
public:
    JobArgs() : detail(nullptr) {}
    JobArgs(JobDetail* jobDetail, const InvokeArgs& invokeArgs)
        : detail(jobDetail), invoke(invokeArgs) {}

    // The job's steps. Ownership passes to JobManager::CreateJob as soon as
    // it is called, whether it returns or throws: the caller never deletes
    // it afterwards.
    JobDetail* detail;
    InvokeArgs invoke;
    // The elements the job works on (for example the pool a volume is made
    // from); each gets an AffectedJobElement. May be empty.
    std::vector<Pegasus::CIMObjectPath> affectedElements;
};

}  // namespace orvsmis

#endif
