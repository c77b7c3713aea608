#include <Pegasus/Server/CompletionCollector.h>

namespace Pegasus {

void CompletionCollector::complete() { _complete = true; }

bool CompletionCollector::completed() const { return _complete; }

} // namespace Pegasus
