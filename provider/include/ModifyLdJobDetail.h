#ifndef ORVSMIS_MODIFYLDJOBDETAIL_H
#define ORVSMIS_MODIFYLDJOBDETAIL_H

#include <string>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// A change of a logical disk (name, size): operation 1, kind 6.
class ModifyLdDetailArgs : public DetailArgs {
public:
    ModifyLdDetailArgs() : DetailArgs(OPERATION_MODIFY, ELEMENT_LD), expand(false), size(0) {}

    std::string arrayId;
    std::string ldNumber;
    // The new name; empty keeps the name.
    std::string ldName;
    bool expand;
    // Bytes: the new size when expand is set.
    unsigned long long size;
};

// Renames and grows a logical disk; done when the view shows both.
class ModifyLdJobDetail : public JobDetail {
public:
    // Takes ownership of args.
    explicit ModifyLdJobDetail(ModifyLdDetailArgs* args);
    virtual ~ModifyLdJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

private:
    ModifyLdDetailArgs* m_args;
};

}  // namespace orvsmis

#endif
