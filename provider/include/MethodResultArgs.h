#ifndef ORVSMIS_METHODRESULTARGS_H
#define ORVSMIS_METHODRESULTARGS_H

#include <Pegasus/Common/CIMObjectPath.h>

namespace orvsmis {

// Carries the job's instance path into MethodResult::Create.
class MethodResultArgs {
public:
    explicit MethodResultArgs(const Pegasus::CIMObjectPath& job) : jobPath(job) {}

    Pegasus::CIMObjectPath jobPath;
};

}  // namespace orvsmis

#endif
