#ifndef ORVSMIS_CREATELDJOBDETAIL_H
#define ORVSMIS_CREATELDJOBDETAIL_H

#include <string>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// A new logical disk: operation 0, kind 6.
class CreateLdDetailArgs : public DetailArgs {
public:
    CreateLdDetailArgs() : DetailArgs(OPERATION_CREATE, ELEMENT_LD), size(0), threshold(0) {}

    std::string arrayId;
    std::string poolNumber;
    // Chosen anew when the job runs.
    std::string ldNumber;
    // Empty leaves the name the array gives.
    std::string ldName;
    // Bytes.
    unsigned long long size;
    // The pool's capacity threshold in percent for a virtual pool, else 0.
    int threshold;
};

// Binds a logical disk at the lowest free number, then names it.
class CreateLdJobDetail : public JobDetail {
public:
    enum { STEP_NONE = 0, STEP_BIND = 1, STEP_NAME = 2 };

    // Takes ownership of args.
    explicit CreateLdJobDetail(CreateLdDetailArgs* args);
    virtual ~CreateLdJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    // After a failed naming, unbinds the unnamed disk.
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

    int GetStep() const { return m_step; }

private:
    CreateLdDetailArgs* m_args;
    int m_step;
};

}  // namespace orvsmis

#endif
