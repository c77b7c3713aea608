#ifndef ORVSMIS_JOBDETAIL_H
#define ORVSMIS_JOBDETAIL_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMParamValue.h>

#include "DetailArgs.h"

namespace orvsmis {

// The steps of one job type: its array commands, the proof of their effect
// and the undo of a half-done run. One subclass per job type; the job owns
// its detail and deletes it.
class JobDetail {
public:
    virtual ~JobDetail() {}

    // Runs the array commands, on the configuration thread. True when every
    // command was accepted. On failure pushes the failing command's
    // ResultInfo on GetDetail()->errors, keeps in its own fields how far it
    // came (for Recover) and returns false.
    virtual bool Execute() = 0;

    // Looks in the latest view result (the stored records) whether the
    // effect is there. True when it is; out then holds the method's output
    // parameters (references to created elements, sizes, ...). False means
    // not yet. Runs on the view thread.
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out) = 0;

    // Undoes what a failed Execute left. Best effort: failures are traced
    // and dropped. May do nothing.
    virtual void Recover() = 0;

    // The job's argument record; never null.
    virtual DetailArgs* GetDetail() = 0;

    // The text of the job's Description property.
    virtual std::string GetDescription() { return std::string(); }
};

}  // namespace orvsmis

#endif
