#ifndef ORVSMIS_DETAILARGS_H
#define ORVSMIS_DETAILARGS_H

#include <vector>

#include "ResultInfo.h"

namespace orvsmis {

// The argument record of a job: base of every job type's own record
// (CreatePoolDetailArgs, CreateLdDetailArgs, ...). It stays inside its
// JobDetail and is reached through JobDetail::GetDetail.
class DetailArgs {
public:
    // Values of operation.
    enum { OPERATION_CREATE = 0, OPERATION_MODIFY = 1, OPERATION_DELETE = 2 };
    // Values of elementKind: the record type of the element the job works on.
    enum { ELEMENT_POOL = 5, ELEMENT_LD = 6 };

    DetailArgs() : operation(OPERATION_CREATE), elementKind(0) {}
    DetailArgs(int op, int kind) : operation(op), elementKind(kind) {}
    virtual ~DetailArgs() {}

    // 0 create, 1 modify, 2 delete. A finished create job moves its
    // AffectedJobElement associations to what Finish reports.
    int operation;
    // 5 pool, 6 logical disk.
    int elementKind;
    // One entry per failing array command, pushed by Execute; shown by the
    // job's ErrorDescription, GetError and GetErrors.
    std::vector<ResultInfo> errors;
};

}  // namespace orvsmis

#endif
