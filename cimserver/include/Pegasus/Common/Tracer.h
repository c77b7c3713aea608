#ifndef Pegasus_Tracer_h
#define Pegasus_Tracer_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class CIMException;

// Trace components, in the order of their configuration names (see
// Tracer::componentName). The last two are this server's own: the schema
// loader, and the storage provider module, which traces under id 44.
enum TraceComponentId {
    TRC_XML, TRC_XML_IO, TRC_HTTP, TRC_REPOSITORY, TRC_DISPATCHER, TRC_OS_ABSTRACTION,
    TRC_CONFIG, TRC_IND_HANDLER, TRC_AUTHENTICATION, TRC_AUTHORIZATION, TRC_USER_MANAGER,
    TRC_SHUTDOWN, TRC_SERVER, TRC_INDICATION_SERVICE, TRC_MESSAGEQUEUESERVICE,
    TRC_PROVIDERMANAGER, TRC_OBJECTRESOLUTION, TRC_WQL, TRC_CQL, TRC_FQL, TRC_THREAD,
    TRC_EXP_REQUEST_DISP, TRC_SSL, TRC_CONTROLPROVIDER, TRC_CIMOM_HANDLE, TRC_L10N,
    TRC_EXPORT_CLIENT, TRC_LISTENER, TRC_DISCARDED_DATA, TRC_PROVIDERAGENT, TRC_IND_FORMATTER,
    TRC_STATISTICAL_DATA, TRC_CMPIPROVIDER, TRC_INDICATION_GENERATION, TRC_INDICATION_RECEIPT,
    TRC_CMPIPROVIDERINTERFACE, TRC_WSMSERVER, TRC_RSSERVER, TRC_WEBSERVER, TRC_LOGMSG,
    TRC_WMI_MAPPER_CONSUMER, TRC_INTERNALPROVIDER, TRC_ENUMCONTEXT, TRC_SCHEMA,
    TRC_PROVIDERMODULE,
    TRC_COMPONENT_COUNT
};

// What PEG_METHOD_ENTER leaves in the scope for PEG_METHOD_EXIT.
struct TracerToken {
    TraceComponentId component = TRC_XML;
    const char* method = nullptr;
};

// The server's trace file. Lines look like
//   "<sec>s-<usec>us: <Component> [<pid>:<thread>:<file>:<line>]: <message>".
// Everything is thread-safe; a disabled trace costs one atomic load.
class PEGASUS_COMMON_LINKAGE Tracer {
public:
    static const Uint32 LEVEL1;
    static const Uint32 LEVEL2;
    static const Uint32 LEVEL3;
    static const Uint32 LEVEL4;

    static void traceCString(const char* fileName, const Uint32 lineNum,
        const TraceComponentId traceComponent, const char* cstring);
    static void traceCIMException(const TraceComponentId traceComponent, const Uint32 level,
        const CIMException& cimException);

    static Boolean isTraceOn();
    static Boolean isTraceEnabled(const TraceComponentId traceComponent, const Uint32 traceLevel);

    // 0 when the file could be opened for appending, 1 otherwise.
    static Uint32 setTraceFile(const char* traceFile);
    // Takes one of LEVEL1..LEVEL4: that level and the ones below it are traced.
    // False for any other value.
    static Boolean setTraceLevel(const Uint32 traceLevel);
    // "ALL" (any case), "" (none) or a comma list of component names; false
    // when a name is unknown (nothing is changed then).
    static Boolean setTraceComponents(const String& traceComponents);
    static void flushTrace();

    // Server side: the configuration's traceLevel 0..5 (5 adds method entry
    // and exit); false outside that range.
    static Boolean setTraceLevelNumber(Uint32 number);
    static Boolean isValidComponents(const String& traceComponents);
    static const char* componentName(TraceComponentId component);
    // Stops tracing and closes the file.
    static void closeTrace();

    // Used by the macros below.
    static void traceFormat(const char* fileName, Uint32 lineNum, TraceComponentId component,
        Uint32 level, const char* format, ...) __attribute__((format(printf, 5, 6)));
    static void traceEnter(TracerToken& token, const char* fileName, Uint32 lineNum,
        TraceComponentId component, const char* method);
    static void traceExit(TracerToken& token, const char* fileName, Uint32 lineNum);

    // Carries the caller's file and line into PEG_TRACE((...)).
    class PEGASUS_COMMON_LINKAGE Site {
    public:
        Site(const char* fileName, Uint32 lineNum) : _file(fileName), _line(lineNum) {}
        void trace(TraceComponentId component, Uint32 level, const char* format, ...)
            __attribute__((format(printf, 4, 5)));
    private:
        const char* _file;
        Uint32 _line;
    };
};

PEGASUS_NAMESPACE_END

#define PEG_METHOD_ENTER(comp, meth)                                                  \
    ::Pegasus::TracerToken PEGASUS_TRACER_TOKEN;                                       \
    do {                                                                               \
        if (::Pegasus::Tracer::isTraceOn())                                            \
            ::Pegasus::Tracer::traceEnter(PEGASUS_TRACER_TOKEN, __FILE__, __LINE__, comp, meth); \
    } while (0)

#define PEG_METHOD_EXIT()                                                             \
    do {                                                                               \
        if (::Pegasus::Tracer::isTraceOn())                                            \
            ::Pegasus::Tracer::traceExit(PEGASUS_TRACER_TOKEN, __FILE__, __LINE__);    \
    } while (0)

#define PEG_TRACE(VAR_ARGS)                                                           \
    do {                                                                               \
        if (::Pegasus::Tracer::isTraceOn())                                            \
            ::Pegasus::Tracer::Site(__FILE__, __LINE__).trace VAR_ARGS;               \
    } while (0)

#define PEG_TRACE_CSTRING(comp, level, chars)                                         \
    do {                                                                               \
        if (::Pegasus::Tracer::isTraceOn())                                            \
            ::Pegasus::Tracer::Site(__FILE__, __LINE__).trace(comp, level, "%s", chars); \
    } while (0)

#endif
