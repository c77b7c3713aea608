#ifndef Pegasus_Server_CompletionCollector_h
#define Pegasus_Server_CompletionCollector_h

#include <Pegasus/Common/ResponseHandler.h>

#include <atomic>

namespace Pegasus {

// The handler of a request that delivers nothing (modify, delete): it only
// notes whether the provider said it was done.
class CompletionCollector : public virtual ResponseHandler {
public:
    CompletionCollector() = default;
    void processing() override {}
    void complete() override;
    bool completed() const;

private:
    std::atomic<bool> _complete{false};
};

} // namespace Pegasus

#endif
