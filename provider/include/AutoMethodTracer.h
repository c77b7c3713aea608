#ifndef ORVSMIS_AUTOMETHODTRACER_H
#define ORVSMIS_AUTOMETHODTRACER_H

#include <Pegasus/Common/Tracer.h>

#include "SmisTrace.h"

namespace orvsmis {

// Traces the entry of a method when made and its exit when the scope ends,
// however it ends. The text must outlive the object (a literal or __func__).
class AutoMethodTracer {
public:
    explicit AutoMethodTracer(const char* method, const char* file = __builtin_FILE(),
        unsigned line = __builtin_LINE())
        : m_file(file), m_line(line) {
        if (Pegasus::Tracer::isTraceOn())
            Pegasus::Tracer::traceEnter(m_token, m_file, m_line, SMIS_TRACE_COMPONENT, method);
    }
    ~AutoMethodTracer() {
        if (m_token.method != nullptr) Pegasus::Tracer::traceExit(m_token, m_file, m_line);
    }
    AutoMethodTracer(const AutoMethodTracer&) = delete;
    AutoMethodTracer& operator=(const AutoMethodTracer&) = delete;

private:
    Pegasus::TracerToken m_token;
    const char* m_file;
    unsigned m_line;
};

}  // namespace orvsmis

#define SMIS_METHOD_TRACER(NAME) ::orvsmis::AutoMethodTracer smisMethodTracer_(NAME)

#endif
