#ifndef ORVSMIS_SMISTRACE_H
#define ORVSMIS_SMISTRACE_H

// The module traces through the server's tracer under its own component.

#include <Pegasus/Common/Tracer.h>

namespace orvsmis {

static const Pegasus::TraceComponentId SMIS_TRACE_COMPONENT = static_cast<Pegasus::TraceComponentId>(44);

}  // namespace orvsmis

#define SMIS_TRACE(LEVEL, ...) PEG_TRACE((::orvsmis::SMIS_TRACE_COMPONENT, ::Pegasus::Tracer::LEVEL, __VA_ARGS__))

#endif
