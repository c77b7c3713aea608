#ifndef Pegasus_Server_CIMServerConfig_h
#define Pegasus_Server_CIMServerConfig_h

#include <stdexcept>
#include <string>

namespace Pegasus {

// A configuration that cannot be used; the text names the file and line.
class ConfigError : public std::runtime_error {
public:
    explicit ConfigError(const std::string& what) : std::runtime_error(what) {}
};

// The server's settings, read from "name=value" lines ('#' starts a comment
// line). Every absolute path is taken under $SMIS_ROOT when that is set.
class CIMServerConfig {
public:
    int httpPort = 5988;
    int httpsPort = 5989;
    bool enableHttpConnection = true;
    bool enableHttpsConnection = true;
    bool loopbackOnly = false;                 // listenAddress: "all" or "loopback"
    bool enableAuthentication = true;
    bool enableAssociationTraversal = true;
    std::string passwordFile;
    std::string sslCertificateFilePath;
    std::string sslKeyFilePath;
    unsigned traceLevel = 0;                   // 0..5
    std::string traceComponents;
    std::string traceFilePath;
    std::string repositoryDir;
    std::string providerDir;
    std::string schemaDir;
    std::string auditLogFile;
    std::string pidFile;
    std::string hostname;                      // empty: the system's own name
    std::string fullyQualifiedHostName;

    // The defaults, paths resolved under $SMIS_ROOT.
    CIMServerConfig();

    // "/opt/pegasus/etc/cimserver.conf" under $SMIS_ROOT.
    static std::string defaultFile();
    // `path` under $SMIS_ROOT when it is absolute and SMIS_ROOT is set.
    static std::string underRoot(const std::string& path);

    // The defaults overridden by the file; a missing file is an error.
    static CIMServerConfig load(const std::string& file);
    // The same from text; `source` names it in errors.
    static CIMServerConfig parse(const std::string& text, const std::string& source);

    // Sets one setting from its text; throws ConfigError (without a place).
    void set(const std::string& name, const std::string& value);
};

} // namespace Pegasus

#endif
