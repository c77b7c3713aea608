#ifndef Pegasus_AuditLogger_h
#define Pegasus_AuditLogger_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/OperationContext.h>

#include <string>

PEGASUS_NAMESPACE_BEGIN

// One line in the server's audit log for an operation a provider starts:
// "<UTC time> user=<user or -> <text>". Thread-safe; a failing log write is
// traced, never thrown to the provider.
PEGASUS_COMMON_LINKAGE void outputFedRampLog(const OperationContext& context, const std::string& text);

// The audit log: set by the server at start (the "auditLogFile" setting).
class PEGASUS_COMMON_LINKAGE AuditLogger {
public:
    static void setLogFile(const std::string& path);
    static std::string logFile();
    static void write(const OperationContext& context, const std::string& text);
};

PEGASUS_NAMESPACE_END

#endif
